#include "common/utils/identifiers.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/autorelease_pool.h"

namespace {

TEST(GenerateLowerUuid, IsNewAndInLowerCaseEveryTime) {
  const AutoreleasePool pool;
  std::set<std::string> seen;
  for (int i = 0; i < 200; ++i) {
    const std::string id = Utils::GenerateLowerUuid();
    ASSERT_EQ(id.size(), 36u);
    for (std::size_t at = 0; at < id.size(); ++at) {
      const bool hyphen = at == 8 || at == 13 || at == 18 || at == 23;
      EXPECT_NE(std::string(hyphen ? "-" : "0123456789abcdef").find(id[at]), std::string::npos) << id;
    }
    EXPECT_TRUE(seen.insert(id).second) << id;
  }
}

}  // namespace
