#include "common/utils/identifiers.h"

#include <gmock/gmock.h>

#include "platform/autorelease_pool.h"
#include "support/testing.h"

TEST(GenerateLowerUuid, ReturnsANewUuidInLowerCase) {
  const AutoreleasePool pool;
  std::set<std::string> seen;
  for (int i = 0; i < 200; ++i) {
    const std::string id = Utils::GenerateLowerUuid();
    EXPECT_THAT(id, testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    EXPECT_TRUE(seen.insert(id).second) << id;
  }
}
