// The path rules and string utilities on arbitrary units (lone surrogates and NULs
// included): classification answers or refuses an invalid path with code 2, derived working
// names are recognised by their own tests, and the utilities keep their algebra.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "base/Path.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncPathMgr.h"
#include "docmgr/nsCOMPtr.h"

namespace {

using base::String;

const int kInvalidArgument = 2;
// A root that does not exist: the rules that look at the disk find nothing there.
const char16_t kRoot[] = u"/nonexistent-fuzz-root/Sync";

ncPathMgr& PathMgr() {
  static ncPathMgr* pathMgr = [] {
    ncPathMgr* made = NC_NEW(ncPathMgr);
    made->AddRef();
    made->Init(kRoot, false);
    return made;
  }();
  return *pathMgr;
}

void Classify(const String& path, const String& other, const String& docId) {
  ncPathMgr& rules = PathMgr();
  rules.IsIgnorePath(path);
  rules.IsCadTempPath(path);
  rules.IsTempPath(path);
  rules.IsSysHoldPath(path);
  rules.IsSystemHiddenPath(path);
  rules.IsSiblingPath(path, other);
  FUZZ_CHECK(rules.IsTooLongPath(path) || path.size() < 32743);
  // Working names are derived from the item's name; a path without one ("/") has none.
  const bool named = !base::Path::getFileName(path).empty() && path.back() != u'/' && path.back() != u'\\';
  FUZZ_CHECK(!named || rules.IsCopyPath(rules.GetCopyPath(path)));
  FUZZ_CHECK(!named || rules.IsConflictPath(rules.GetConflictPath(path)));
  FUZZ_CHECK(!named || rules.IsTransferUnsyncPath(rules.GetTransferUnsyncPath(path)));
  fuzz::ExpectOnlyCodes(
      [&] { FUZZ_CHECK(!named || rules.IsBackupPath(rules.GetBackupPathContainDocId(path, docId))); },
      {kInvalidArgument});
  fuzz::ExpectOnlyCodes([&] { rules.GetContainDocIdTempPathName(path, docId); }, {kInvalidArgument});
}

void CheckParentTest(const String& parent, const String& child) {
  const bool below = ncDocUtils::IsParentPath(parent, child, false);
  FUZZ_CHECK(!below || ncDocUtils::IsParentPath(parent, child, true));
  FUZZ_CHECK(!below || !ncDocUtils::IsParentPath(child, parent, false));
  FUZZ_CHECK(ncDocUtils::IsParentPath(parent, parent, true));
  FUZZ_CHECK(!ncDocUtils::IsParentPath(parent, parent, false));
}

void CheckDepth(const String& relPath, uint32_t depth) {
  const String cut = ncDocUtils::GetRelPathByDepth(relPath, depth);
  FUZZ_CHECK(relPath.compare(0, cut.size(), cut) == 0);
  FUZZ_CHECK(cut.size() == relPath.size() || cut.empty() || relPath[cut.size()] == u'\\');
  FUZZ_CHECK(depth != 0 || cut.empty());
}

// A plain left-to-right replacement, written apart from the one under test.
String ReplaceEvery(const String& text, const String& from, const String& to) {
  String out;
  size_t pos = 0;
  for (size_t hit; (hit = text.find(from, pos)) != String::npos; pos = hit + from.size()) {
    out.append(text, pos, hit - pos);
    out += to;
  }
  return out.append(text, pos, String::npos);
}

void CheckReplace(const String& text, const String& from, const String& to) {
  if (from.empty()) return;  // not defined
  FUZZ_CHECK(ncDocUtils::ReplaceStr(text, from, from, true) == text);
  const String all = ncDocUtils::ReplaceStr(text, from, to, true);
  FUZZ_CHECK(all == ReplaceEvery(text, from, to));
  const String once = ncDocUtils::ReplaceStr(text, from, to, false);
  FUZZ_CHECK(once.size() + from.size() == text.size() + to.size() || once == text);
}

void CheckAcronym(const String& name) {
  const String initials = ncDocUtils::GetAcronym(name);
  bool ascii = true;
  for (char16_t unit : name) ascii = ascii && unit < 0x80;
  FUZZ_CHECK(!ascii || initials == name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  const uint8_t flags = input.byte();
  const String first = input.units();
  const String second = input.units();
  const String third = input.units();
  const String path = (flags & 1) ? first : String(kRoot) + u"/" + first;

  fuzz::ExpectOnlyCodes([&] { Classify(path, second, third); }, {kInvalidArgument});
  fuzz::ExpectOnlyCodes([&] { CheckParentTest(first, second); }, {kInvalidArgument});
  fuzz::ExpectOnlyCodes([&] { CheckDepth(first, flags >> 4); }, {kInvalidArgument});
  fuzz::ExpectOnlyCodes([&] { ncDocUtils::IsExtensionPath(first, second); }, {kInvalidArgument});
  CheckReplace(first, second, third);
  CheckAcronym(first);
  return 0;
}
