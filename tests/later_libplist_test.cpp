// ReadPlist built from the same source against later libplist releases, whose parsers return an error code.

#include <gtest/gtest.h>

#include <plist/plist.h>
#include <cstdint>

#include "common/plist_util.h"
#include "support/temporary_folder.h"

namespace {

LaterPlistResult next_result;

LaterPlistResult Parse(const char* bytes, plist_t* plist) {
  *plist = plist_new_string(bytes);
  return next_result;
}

}  // namespace

LaterPlistResult LaterPlistFromXml(const char* xml, std::uint32_t /*length*/, plist_t* plist) {
  return Parse(xml, plist);
}

LaterPlistResult LaterPlistFromBin(const char* bin, std::uint32_t /*length*/, plist_t* plist) {
  return Parse(bin, plist);
}

namespace {

TEST(LaterLibplist, TakesAnErrorCodeForNoTree) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("file", "<plist><true/></plist>");
  next_result = kLaterPlistSuccess;
  const plist_t root = PlistUtil::ReadPlist(path.c_str());
  EXPECT_EQ(plist_get_node_type(root), PLIST_STRING);
  plist_free(root);
  next_result = kLaterPlistFailure;
  EXPECT_EQ(PlistUtil::ReadPlist(path.c_str()), nullptr);
}

}  // namespace
