#include "FileTestSupport.h"

#include "platform/ncWin32.h"

#include <cstdio>
#include <cstdlib>

#include "TestSupport.h"
#include "text/String.h"
#include "platform/ncPlatform.h"

using base::String;

namespace test {

namespace {

std::wstring Wide(const std::string& utf8) {
  const base::String text = base::FromUtf8(utf8);
  return std::wstring(text.begin(), text.end());
}

// Whether the file system refuses to write a read-only file (Wine run by root does not).
bool ReadOnlyIsEnforced(std::string& why) {
  TempDir dir;
  const String probe = dir.child("read-only-probe");
  platform::CreateEmptyFile(probe);
  platform::SetFileAttributes(probe, platform::kAttrReadOnly);
  const bool enforced = !platform::WriteWholeFile(probe, "x");
  platform::SetFileAttributes(probe, platform::kAttrNormal);
  if (!enforced) why = "read-only files stay writable here (Wine run by root maps read-only to permission bits)";
  return enforced;
}

}  // namespace

bool MakeSymlink(const std::string& target, const std::string& link) {
  const DWORD folder = (::GetFileAttributesW(Wide(target).c_str()) & FILE_ATTRIBUTE_DIRECTORY) ? 1 : 0;
  return ::CreateSymbolicLinkW(Wide(link).c_str(), Wide(target).c_str(), folder) != 0;
}

const bool kPosixBackend = false;

// Read from the export directory of the file mapped as an image, without running it.
std::string ExportedFunctions(const std::string& moduleFile) {
  HMODULE module = ::LoadLibraryExW(Wide(moduleFile).c_str(), nullptr, LOAD_LIBRARY_AS_IMAGE_RESOURCE);
  if (!module) return "cannot map " + moduleFile;
  const auto* base = reinterpret_cast<const uint8_t*>(reinterpret_cast<uintptr_t>(module) & ~uintptr_t(3));
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& entry = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
  std::string names;
  if (entry.Size != 0) {
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + entry.VirtualAddress);
    const auto* nameTable = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
      names += reinterpret_cast<const char*>(base + nameTable[i]) + std::string("\n");
  }
  ::FreeLibrary(module);
  return names;
}

// desktop.ini is UTF-16 with a byte-order mark; the text is its InfoTip.
std::string FolderDisplayText(const std::string& folder) {
  const std::string bytes = ReadFile(folder + "\\desktop.ini");
  base::String text;
  for (size_t i = 2; i + 1 < bytes.size(); i += 2)
    text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8));
  const size_t start = text.find(u"InfoTip=");
  if (start == base::String::npos) return std::string();
  const size_t end = text.find(u'\r', start);
  return base::ToUtf8(text.substr(start + 8, end == base::String::npos ? base::String::npos : end - start - 8));
}

const size_t kNativePathMax = 0;
const size_t kNativeNameMax = 255;

void SetEnvironment(const char* name, const char* value) { ::_putenv_s(name, value); }

std::string RunCommand(const std::string& command, int* status) {
  std::string output;
  FILE* pipe = ::_popen((command + " 2>&1").c_str(), "rb");
  if (!pipe) {
    *status = -1;
    return output;
  }
  char buffer[4096];
  while (size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, got);
  *status = ::_pclose(pipe);
  return output;
}

bool GetXattr(const std::string&, const std::string&, std::string&) { return false; }

const char kNoStreamsReason[] =
    "no alternate data streams (Wine stores a \"file:stream\" name as a separate file) in ";

// A real stream goes with its file; Wine's stand-in, a file named "file:stream", stays.
bool SupportsStreams(const std::string& directory) {
  const String probe = base::FromUtf8(directory + "\\stream-probe");
  platform::CreateEmptyFile(probe);
  const bool written = platform::WriteStream(probe, u"probe", "1");
  platform::DeleteFile(probe);
  const std::wstring standIn = Wide(directory + "\\stream-probe:probe");
  const bool separate = ::GetFileAttributesW(standIn.c_str()) != INVALID_FILE_ATTRIBUTES;
  if (separate) ::DeleteFileW(standIn.c_str());
  return written && !separate;
}

bool SetImmutable(const std::string&, bool) { return false; }

int RunUnprivileged(const std::function<int()>& body, std::string& why) {
  return ReadOnlyIsEnforced(why) ? body() : -1;
}

void GiveToUnprivileged(const std::string&, const std::string&) {}

}  // namespace test
