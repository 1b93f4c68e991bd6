// Server document ids: the scheme prefix, and the levels from which a parent id and a node
// name come.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "dataapi/ncGNSUtil.h"

namespace {

TEST(GNSUtilTest, ThePrefixIsTheSchemeInAnyLetterCase) {
  EXPECT_TRUE(ncGNSUtil::HasGNSPrefix(u"gns://A"));
  EXPECT_TRUE(ncGNSUtil::HasGNSPrefix(u"GNS://A"));
  EXPECT_FALSE(ncGNSUtil::HasGNSPrefix(u"gns:/A"));
  EXPECT_FALSE(ncGNSUtil::HasGNSPrefix(u"gns:"));
  EXPECT_FALSE(ncGNSUtil::HasGNSPrefix(u"local-1"));
}

TEST(GNSUtilTest, ParentAndNodeNameComeFromTheLevels) {
  EXPECT_EQ(u"gns://A/B", ncGNSUtil::GetParentPath(u"gns://A/B/C"));
  EXPECT_EQ(u"GNS://A", ncGNSUtil::GetParentPath(u"GNS://A/B"));  // the id's own prefix
  EXPECT_EQ(u"gns://A", ncGNSUtil::GetParentPath(u"gns://A/B//"));
  EXPECT_EQ(u"", ncGNSUtil::GetParentPath(u"gns://A"));  // a top-level object has none
  EXPECT_EQ(u"", ncGNSUtil::GetParentPath(u"C:\\A\\B"));
  EXPECT_EQ(u"C", ncGNSUtil::GetNodeName(u"gns://A/B/C/"));
  EXPECT_EQ(u"A", ncGNSUtil::GetNodeName(u"gns://A"));
  EXPECT_EQ(u"", ncGNSUtil::GetNodeName(u"C:\\x"));
}

}  // namespace
