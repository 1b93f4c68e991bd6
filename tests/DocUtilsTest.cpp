// Ancestor tests, extensions, replacement, initials and search marking.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncDocUtils.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

String FromGb(std::initializer_list<unsigned char> bytes) {
  return platform::FromCodePage936(std::string(bytes.begin(), bytes.end()));
}

TEST(DocUtilsTest, AncestorsExtensionsAndReplacement) {
  EXPECT_TRUE(ncDocUtils::IsParentPath(u"C:\\A", u"c:\\a\\b", false));
  EXPECT_FALSE(ncDocUtils::IsParentPath(u"C:\\A", u"C:\\A", false));
  EXPECT_TRUE(ncDocUtils::IsParentPath(u"C:\\A", u"C:\\A\\", true));
  EXPECT_FALSE(ncDocUtils::IsParentPath(u"C:\\ab", u"C:\\abc", true));
  EXPECT_TRUE(ncDocUtils::IsParentPath(u"\\\\?\\C:\\A", u"C:\\A\\x", false));
  EXPECT_TRUE(ncDocUtils::IsParentPath(u"/home/u/Sync", u"/home/u/sync/项目/a.txt", false));
  EXPECT_FALSE(ncDocUtils::IsParentPath(u"/home/u/Sync/a", u"/home/u/Sync", true));
  EXPECT_THROW_CODE_MESSAGE(ncDocUtils::IsParentPath(u"", u"/a", true), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE(ncDocUtils::IsParentPath(u"/a", String(u"/a\0b", 4), true), 2);

  // Extensions and replacement.
  EXPECT_TRUE(ncDocUtils::IsExtensionPath(u"/x/Report.TMP", u".tmp"));
  EXPECT_TRUE(ncDocUtils::IsExtensionPath(u"/x/a.td.cfg", u".td.cfg"));
  EXPECT_FALSE(ncDocUtils::IsExtensionPath(u"/x.tmp/a", u".tmp"));
  EXPECT_FALSE(ncDocUtils::IsExtensionPath(u"/x/a.tmpl", u".tmp"));

  EXPECT_EQ(u"a-bXc", ncDocUtils::ReplaceStr(u"aXbXc", u"X", u"-", false));
  EXPECT_EQ(u"a-b-c", ncDocUtils::ReplaceStr(u"aXbXc", u"X", u"-", true));

  // The first components of a relative path, or nothing when it has fewer.
  EXPECT_EQ(u"a\\b", ncDocUtils::GetRelPathByDepth(u"a\\b\\c", 2));
  EXPECT_EQ(u"a\\b", ncDocUtils::GetRelPathByDepth(u"a\\b", 2));
  EXPECT_EQ(u"", ncDocUtils::GetRelPathByDepth(u"a", 2));
  EXPECT_EQ(u"a", ncDocUtils::GetRelPathByDepth(u"a\\b\\c", 1));
}

TEST(DocUtilsTest, AcronymOfLevelOneLevelTwoAndLatinKeysAndMarking) {
  EXPECT_EQ(u"Report_2026 (v2).docx", ncDocUtils::GetAcronym(u"Report_2026 (v2).docx"));
  EXPECT_EQ(u"XM", ncDocUtils::GetAcronym(u"项目"));
  EXPECT_EQ(u"SJWD.pdf", ncDocUtils::GetAcronym(u"设计文档.pdf"));
  EXPECT_EQ(u"aXMb", ncDocUtils::GetAcronym(u"a项目b"));
  // The first and last codes of the level-1 thresholds.
  EXPECT_EQ(u"A", ncDocUtils::GetAcronym(FromGb({0xB0, 0xA1})));
  EXPECT_EQ(u"B", ncDocUtils::GetAcronym(FromGb({0xB0, 0xC5})));  // code 1637
  EXPECT_EQ(u"Z", ncDocUtils::GetAcronym(FromGb({0xD7, 0xF9})));  // code 5589, the last level-1 character
  // Level 2: the table's first entries, including a "[" kept as it is.
  EXPECT_EQ(u"C", ncDocUtils::GetAcronym(FromGb({0xD8, 0xA1})));
  EXPECT_EQ(u"J", ncDocUtils::GetAcronym(FromGb({0xD8, 0xA2})));
  EXPECT_EQ(u"[", ncDocUtils::GetAcronym(FromGb({0xD8, 0xAD})));
  EXPECT_EQ(u"Z", ncDocUtils::GetAcronym(FromGb({0xF7, 0xFE})));  // the table's last entry
  // Other GBK characters pass through; one the code page lacks becomes "?".
  EXPECT_EQ(u"?é", ncDocUtils::GetAcronym(u"\U0001F600é"));

  // Acronym keys and marking.
  EXPECT_TRUE(ncDocUtils::IsAcronymKey(u"ab c~"));
  EXPECT_FALSE(ncDocUtils::IsAcronymKey(u""));
  EXPECT_FALSE(ncDocUtils::IsAcronymKey(u"项目"));
  EXPECT_FALSE(ncDocUtils::IsAcronymKey(String(1, char16_t(127))));
  EXPECT_FALSE(ncDocUtils::IsAcronymKey(u"é"));

  EXPECT_EQ(u"My <Rep>ort", ncDocUtils::MarkMatch(u"My Report", false, true, u"rep", u"<", u">"));
  EXPECT_EQ(u"<R>e<p>or<t>", ncDocUtils::MarkMatch(u"Report", false, false, u"rpt", u"<", u">"));
  // Marking by initials is watched by the cache's search tests.
  EXPECT_EQ(u"plain", ncDocUtils::MarkMatch(u"plain", false, true, u"zz", u"<", u">"));
}

}  // namespace
