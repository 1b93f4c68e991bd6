// The foundation layer: formatting, text conversion, paths, the message catalogues and
// tracing (each backend's file operations have their own tests). The pool's
// counts are watched by the module tests.
#include <cstring>

#include "TestSupport.h"
#include "base/MoResourceLoader.h"
#include "base/Path.h"
#include "base/Trace.h"
#include "docmgr/ncDocUtils.h"
#include "platform/ncPlatform.h"

using base::Format;
using base::String;

namespace {

TEST(FormatTest, DirectivesMissingArgumentsAndTheSecondPass) {
  EXPECT_EQ(u"Path (/a/b) is INVALID.", Format(u"Path (%s) is INVALID.", String(u"/a/b")));
  EXPECT_EQ(u"id = '-9007199254740993'", Format(u"id = '%I64d'", int64_t(-9007199254740993LL)));
  EXPECT_EQ(u"7 -7 4294967289 fff9 FFFFFFF9", Format(u"%d %i %u %x %X", 7, -7, -7, uint16_t(0xfff9), -7));
  EXPECT_EQ(u"05_0A2B_00ff", Format(u"%02d_%04X_%04x", 5, 0xA2B, 255));
  EXPECT_EQ(u"0.1234567890123457", Format(u"%.16g", 0.12345678901234567));
  EXPECT_EQ(u"100% sure", Format(u"%d%% sure", 100));
  EXPECT_EQ(u"[ab   |  ab]", Format(u"[%-5s|%4s]", "ab", u"ab"));
  EXPECT_EQ(u"size: 12" u"64", Format(u"size: %i64", int64_t(12)));  // "%i" then the text "64"
  EXPECT_EQ(16u + 2, Format(u"0x%p", reinterpret_cast<void*>(0x1234)).size());

  // Huge widths and precisions are clamped, never overflow, and leave texts whole.
  EXPECT_EQ(4096u, Format(u"%999999999999d", 1).size());
  EXPECT_EQ(4096u + 1, Format(u"%.99999999999d", -1).size());
  EXPECT_EQ(u"abc", Format(u"%.99999999999s", u"abc"));
  EXPECT_EQ(u"%99999999999999999999d", Format(u"%99999999999999999999d"));  // no argument: as it stands
  EXPECT_EQ(u"9223372036854775807 0", Format(u"%d %d", 1e300, 0.0 / 0.0));

  // Missing arguments leave the text alone (DBMgrTest formats a finished message again).
  EXPECT_EQ(u"a %s b %d", Format(u"a %s b %d"));
  EXPECT_EQ(u"x=1 y=%d", Format(u"x=%d y=%d", 1));
  EXPECT_EQ(u"%", Format(u"%"));
}

TEST(StringTest, CaseNumbersTrimmingAndJoinedPaths) {
  EXPECT_TRUE(base::EqualsIgnoreCase(u"C:\\Work\\ÄBC", u"c:\\work\\äbc"));
  EXPECT_FALSE(base::EqualsIgnoreCase(u"abc", u"abd"));
  EXPECT_EQ(-42, base::ToInt64(u" -42abc"));
  EXPECT_EQ(0, base::ToInt64(static_cast<const char*>(nullptr)));
  EXPECT_EQ(9223372036854775807LL, base::ToInt64("9223372036854775807"));
  EXPECT_EQ(u"a", base::Trim(u"\\\\a\\", u'\\'));
  EXPECT_EQ(u"", base::Trim(u"\\\\", u'\\'));

  EXPECT_EQ(String(u"/a") + platform::kPathSeparator + u"b", base::Path::combine(u"/a", u"b"));
  EXPECT_EQ(u"/a/b", base::Path::combine(u"/a/", u"b"));
}

// docmgr-cli's translated messages read a real catalogue (CliTest). One whose header
// promises more than the file holds is not read: the built-in texts stand, then the key.
TEST(ResourceTest, ATruncatedCatalogueLeavesTheBuiltInTextsThenTheKey) {
  test::TempDir dir;
  std::string mo(40, '\0');  // the GNU .mo header of two entries, cut inside their table
  auto put = [&mo](size_t at, uint32_t v) { std::memcpy(&mo[at], &v, 4); };
  put(0, 0x950412de), put(8, 2), put(12, 28), put(16, 44), put(32, 60), put(36, 5);
  test::WriteFile(dir.path() + "/broken.mo", mo);
  const base::ResourceText builtIn[] = {{"IDS_A", "built-in A %s"}, {nullptr, nullptr}};
  base::MoResourceLoader broken(dir.child("broken.mo"), builtIn);
  EXPECT_FALSE(broken.isCatalogueLoaded());
  EXPECT_EQ(u"built-in A x", base::FormatResource(&broken, u"IDS_A", u"x"));
  EXPECT_EQ(u"IDS_C", broken.getString(u"IDS_C"));
}

TEST(TraceTest, LinesNameTheModuleSourceMethodAndArguments) {
  test::TempDir dir;
  const std::string file = dir.path() + "/trace.log";
  base::Trace::configure(file);
  ncDocUtils::ReplaceStr(u"a'b", u"'", u"''", true);
  base::Trace::configure("");
  ncDocUtils::ReplaceStr(u"not traced", u"x", u"y", true);
  const std::string trace = test::ReadFile(file);
  EXPECT_TRUE(test::Has(trace, {" docmgr src/docmgr/ncDocUtils.cpp:",
                                 " ncDocUtils::ReplaceStr srcStr: a'b, oldSubStr: ', newSubStr: '', replaceAll: 1\n"}));
  EXPECT_EQ(std::string::npos, trace.find("not traced"));
  EXPECT_EQ("ncPathMgr::ncPathMgr", base::Trace::qualifiedName("ncPathMgr::ncPathMgr()"));
  EXPECT_EQ("ns::Foo::bar", base::Trace::qualifiedName("std::map<int, int> ns::Foo::bar(const int&) const"));
}

}  // namespace
