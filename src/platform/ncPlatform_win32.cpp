// Windows backend of the platform interface: a thin pass-through to Win32. The last-error
// code is the system's own; paths become wide strings, with the long-path prefix where a
// path needs it.
#include "platform/ncPlatform.h"
#include "platform/ncAtomic.h"

#include "platform/ncWin32.h"

#include <objbase.h>
#include <shellapi.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace platform {

namespace {

// Below this many units every Win32 call takes a path as it is.
const size_t kShortPathLimit = MAX_PATH - 12;

std::wstring Wide(const String& text) { return std::wstring(text.begin(), text.end()); }

String FromWide(const wchar_t* text, size_t length) { return String(text, text + length); }

String FromWide(const std::wstring& text) { return FromWide(text.data(), text.size()); }

bool IsAbsoluteDrivePath(const String& path) {
  return path.size() >= 3 && path[1] == u':' && (path[2] == u'\\' || path[2] == u'/') &&
         ((path[0] >= u'A' && path[0] <= u'Z') || (path[0] >= u'a' && path[0] <= u'z'));
}

bool IsUncPath(const String& path) { return path.size() > 2 && path[0] == u'\\' && path[1] == u'\\'; }

bool HasLongPathPrefix(const String& path) { return base::StartsWith(path, u"\\\\?\\"); }

// The prefix turns off the system's own clean-up of the path, so "." and ".." and '/' are
// resolved first.
String FullPath(const String& path) {
  const std::wstring wide = Wide(path);
  const DWORD size = ::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
  if (size == 0) return path;
  std::wstring full(size, L'\0');
  const DWORD length = ::GetFullPathNameW(wide.c_str(), size, &full[0], nullptr);
  if (length == 0 || length >= size) return path;
  return FromWide(full.data(), length);
}

// The path for a Win32 call: long absolute paths get the prefix, short ones go as they are.
std::wstring SystemPath(const String& path) {
  if (HasLongPathPrefix(path) || path.size() < kShortPathLimit) return Wide(path);
  return Wide(AddLongPathPrefix(path));
}

std::wstring StreamPath(const String& path, const String& streamName) {
  return SystemPath(path) + L":" + Wide(streamName);
}

bool Succeed() {
  ::SetLastError(ERROR_SUCCESS);
  return true;
}

bool Fail(uint32_t code) {
  ::SetLastError(code);
  return false;
}

// Owns a handle until the system function that closes its kind is called on it.
template <BOOL(WINAPI* Close)(HANDLE)>
class ScopedHandle {
 public:
  explicit ScopedHandle(HANDLE handle) : handle_(handle) {}
  ~ScopedHandle() {
    if (valid()) Close(handle_);
  }
  ScopedHandle(const ScopedHandle&) = delete;
  ScopedHandle& operator=(const ScopedHandle&) = delete;
  HANDLE get() const { return handle_; }
  bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

using Handle = ScopedHandle<::CloseHandle>;
using FindHandle = ScopedHandle<::FindClose>;

// Folders open only with backup semantics; files do not mind it.
HANDLE OpenForStream(const std::wstring& path, DWORD access, DWORD disposition) {
  return ::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       disposition, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool WriteAll(HANDLE file, const std::string& bytes) {
  size_t written = 0;
  while (written < bytes.size()) {
    const DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size() - written, 1u << 30));
    DWORD put = 0;
    if (!::WriteFile(file, bytes.data() + written, chunk, &put, nullptr)) return false;
    written += put;
  }
  return true;
}

bool WriteWholeFile(const std::wstring& path, const std::string& bytes) {
  Handle file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.valid()) return false;
  return WriteAll(file.get(), bytes);
}

}  // namespace

uint32_t GetLastError() { return ::GetLastError(); }
void SetLastError(uint32_t code) { ::SetLastError(code); }

String AddLongPathPrefix(const String& path) {
  if (HasLongPathPrefix(path)) return path;
  if (IsAbsoluteDrivePath(path)) return u"\\\\?\\" + FullPath(path);
  if (IsUncPath(path)) return u"\\\\?\\UNC\\" + FullPath(path).substr(2);
  return path;
}

String RemoveLongPathPrefix(const String& path) {
  if (base::StartsWith(path, u"\\\\?\\UNC\\")) return u"\\\\" + path.substr(8);
  return HasLongPathPrefix(path) ? path.substr(4) : path;
}

std::string NativePath(const String& path) {
  const String plain = RemoveLongPathPrefix(path);
  return base::ToUtf8(plain.size() < kShortPathLimit ? plain : path);
}

// With the prefix a path may run to the specified limit; a single name still stops at 255.
bool ExceedsNativePathLimits(const String& path) {
  size_t start = 0;
  while (start <= path.size()) {
    size_t end = path.find_first_of(kPathSeparators, start);
    if (end == String::npos) end = path.size();
    if (end - start > 255) return true;
    start = end + 1;
  }
  return false;
}

uint32_t GetFileAttributes(const String& path) { return ::GetFileAttributesW(SystemPath(path).c_str()); }

bool GetFileSize(const String& path, int64_t& size) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!::GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &data)) return false;
  size = (static_cast<int64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  return true;
}

namespace {
int64_t MicrosSince1970(const FILETIME& time) {
  const int64_t ticks = (static_cast<int64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  const int64_t kTicksFrom1601To1970 = 116444736000000000LL;  // 100 ns ticks
  return (ticks - kTicksFrom1601To1970) / 10;
}
}  // namespace

bool GetFileInfo(const String& path, FileInfo& out) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!::GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &data)) return false;
  const bool link = data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT;
  out.isDirectory = !link && (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
  out.isRegularFile = !link && !out.isDirectory;
  out.kind = link ? FileKind::kLink : out.isDirectory ? FileKind::kDirectory : FileKind::kRegularFile;
  out.size = out.isRegularFile ? (static_cast<int64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow : 0;
  out.modifiedMicros = MicrosSince1970(data.ftLastWriteTime);
  return true;
}

String GetFullPath(const String& path) { return FullPath(path); }

bool IsDirectory(const String& path) {
  const DWORD attributes = ::GetFileAttributesW(SystemPath(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  return attributes & FILE_ATTRIBUTE_DIRECTORY ? Succeed() : Fail(kErrorPathNotFound);
}

bool SetFileAttributes(const String& path, uint32_t attributes) {
  return ::SetFileAttributesW(SystemPath(path).c_str(), attributes) != 0;
}

bool CreateDirectory(const String& path) { return ::CreateDirectoryW(SystemPath(path).c_str(), nullptr) != 0; }

bool CreateEmptyFile(const String& path) {
  Handle file(::CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
  return file.valid();
}

bool WriteWholeFile(const String& path, const std::string& bytes) {
  return WriteWholeFile(SystemPath(path), bytes) ? Succeed() : false;
}

bool IsReadable(const String& path) {
  Handle file(::CreateFileW(SystemPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  return file.valid() ? Succeed() : false;
}

String GetTempDirectory() {
  wchar_t folder[MAX_PATH + 2];
  const DWORD length = ::GetTempPathW(MAX_PATH + 2, folder);
  String path = length > 0 && length < MAX_PATH + 2 ? FromWide(folder, length) : String(u".");
  while (path.size() > 3 && (path.back() == u'\\' || path.back() == u'/')) path.pop_back();
  return path;
}

bool ListDirectory(const String& path, std::vector<String>& names) {
  WIN32_FIND_DATAW entry;
  FindHandle find(::FindFirstFileW((SystemPath(path) + L"\\*").c_str(), &entry));
  if (!find.valid()) return false;
  do {
    // No Windows name holds a ':'; Wine keeps a named stream as a file "name:stream",
    // which is part of the file, not an entry of the folder.
    const std::wstring name = entry.cFileName;
    if (name != L"." && name != L".." && name.find(L':') == std::wstring::npos) names.push_back(FromWide(name));
  } while (::FindNextFileW(find.get(), &entry));
  return ::GetLastError() == ERROR_NO_MORE_FILES ? Succeed() : false;
}

bool RemoveDirectory(const String& path) { return ::RemoveDirectoryW(SystemPath(path).c_str()) != 0; }

bool IsMountPoint(const String& path) {
  const std::wstring wide = SystemPath(path);
  const DWORD attributes = ::GetFileAttributesW(wide.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return Fail(kErrorPathNotFound);
  wchar_t volume[MAX_PATH + 1];
  if (!::GetVolumePathNameW(wide.c_str(), volume, MAX_PATH + 1)) return false;
  Succeed();
  String self = RemoveLongPathPrefix(FullPath(RemoveLongPathPrefix(path)));
  String root = RemoveLongPathPrefix(FromWide(volume, wcslen(volume)));
  while (!self.empty() && (self.back() == u'\\' || self.back() == u'/')) self.pop_back();
  while (!root.empty() && (root.back() == u'\\' || root.back() == u'/')) root.pop_back();
  return base::EqualsIgnoreCase(self, root);
}

bool DeleteFile(const String& path) { return ::DeleteFileW(SystemPath(path).c_str()) != 0; }

bool MoveFile(const String& source, const String& target) {
  return ::MoveFileW(SystemPath(source).c_str(), SystemPath(target).c_str()) != 0;
}

bool CopyFile(const String& source, const String& target, bool failIfExists) {
  return ::CopyFileW(SystemPath(source).c_str(), SystemPath(target).c_str(), failIfExists ? TRUE : FALSE) != 0;
}

bool ReadStream(const String& path, const String& streamName, std::string& bytes) {
  Handle stream(OpenForStream(StreamPath(path, streamName), GENERIC_READ, OPEN_EXISTING));
  if (!stream.valid()) return false;
  std::string value;
  char buffer[4096];
  for (;;) {
    DWORD got = 0;
    if (!::ReadFile(stream.get(), buffer, sizeof buffer, &got, nullptr)) return false;
    if (got == 0) break;
    value.append(buffer, got);
  }
  bytes.swap(value);
  return Succeed();
}

bool WriteStream(const String& path, const String& streamName, const std::string& bytes) {
  Handle stream(OpenForStream(StreamPath(path, streamName), GENERIC_WRITE, OPEN_ALWAYS));
  if (!stream.valid()) return false;
  if (!WriteAll(stream.get(), bytes) || !::SetEndOfFile(stream.get())) return false;
  return Succeed();
}

bool RemoveStream(const String& path, const String& streamName) {
  return ::DeleteFileW(StreamPath(path, streamName).c_str()) != 0;
}

bool HasStream(const String& path, const String& streamName) {
  Handle stream(OpenForStream(StreamPath(path, streamName), 0, OPEN_EXISTING));
  return stream.valid() ? Succeed() : false;
}

// desktop.ini takes the icon and the tip; the shell reads it only from a folder marked
// read-only (or system), and the file itself stays hidden and system.
bool CustomizeFolder(const String& path, const String* text, const String& iconFile, int iconIndex) {
  const std::wstring folder = SystemPath(path);
  const DWORD attributes = ::GetFileAttributesW(folder.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return Fail(kErrorPathNotFound);
  std::wstring content = L"\xFEFF[.ShellClassInfo]\r\n";
  if (!iconFile.empty()) content += L"IconResource=" + Wide(iconFile) + L"," + std::to_wstring(iconIndex) + L"\r\n";
  if (text) content += L"InfoTip=" + Wide(*text) + L"\r\n";
  const std::string bytes(reinterpret_cast<const char*>(content.data()), content.size() * sizeof(wchar_t));
  const std::wstring file = folder + L"\\desktop.ini";
  ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);  // an earlier one is hidden and system
  if (!WriteWholeFile(file, bytes)) return false;
  if (!::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)) return false;
  if (!::SetFileAttributesW(folder.c_str(), attributes | FILE_ATTRIBUTE_READONLY)) return false;
  return Succeed();
}

String GetUserName() {
  wchar_t name[256 + 1];
  DWORD size = sizeof name / sizeof name[0];
  if (!::GetUserNameW(name, &size) || size == 0) return String();
  return FromWide(name, size - 1);  // the count includes the terminator
}

void CreateGuidBytes(uint8_t bytes[16]) {
  GUID guid;
  if (::CoCreateGuid(&guid) != S_OK) std::abort();  // no random source: nothing sensible to fall back on
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(guid.Data1 >> (24 - 8 * i));
  bytes[4] = static_cast<uint8_t>(guid.Data2 >> 8);
  bytes[5] = static_cast<uint8_t>(guid.Data2);
  bytes[6] = static_cast<uint8_t>(guid.Data3 >> 8);
  bytes[7] = static_cast<uint8_t>(guid.Data3);
  for (int i = 0; i < 8; ++i) bytes[8 + i] = guid.Data4[i];
}

String GetModuleDirectory(const void* addressInModule) {
  HMODULE module = nullptr;
  if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            static_cast<LPCWSTR>(addressInModule), &module))
    return String();
  std::wstring file(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = ::GetModuleFileNameW(module, &file[0], static_cast<DWORD>(file.size()));
    if (length == 0) return String();
    if (length < file.size()) {
      file.resize(length);
      break;
    }
    file.resize(file.size() * 2);
  }
  const size_t slash = file.find_last_of(L"\\/");
  return slash == std::wstring::npos ? String(u".") : FromWide(file.substr(0, slash));
}

LocalTime GetLocalTime() {
  SYSTEMTIME now;
  ::GetLocalTime(&now);
  return LocalTime{now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

bool ToLocalTime(int64_t epochSeconds, LocalTime& out) {
  const int64_t ticks = (epochSeconds + 11644473600LL) * 10000000LL;  // 100 ns since 1601
  if (epochSeconds < 0 || ticks < 0) return false;
  const FILETIME utc = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME universal, local;
  if (!::FileTimeToSystemTime(&utc, &universal) || !::SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local))
    return false;
  out = LocalTime{local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond, 0};
  return true;
}

int64_t GetEpochMillis() {
  FILETIME now;
  ::GetSystemTimeAsFileTime(&now);
  return MicrosSince1970(now) / 1000;
}

uint64_t GetCurrentThreadId() { return ::GetCurrentThreadId(); }

bool IsStandardErrorTerminal() {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

// The narrow argv of a Windows program is in the ANSI code page, which loses what it lacks.
std::vector<std::string> GetCommandLineArguments(int argc, char** argv) {
  int count = 0;
  wchar_t** wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  if (!wide || count != argc) {
    if (wide) ::LocalFree(wide);
    return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
  }
  for (int i = 1; i < count; ++i) arguments.push_back(base::ToNativeBytes(FromWide(wide[i], wcslen(wide[i]))));
  ::LocalFree(wide);
  return arguments;
}

void WriteSystemLog(const std::string& utf8Text) {
  HANDLE source = ::RegisterEventSourceW(nullptr, L"docmgr");
  if (!source) return;
  const std::wstring text = Wide(base::FromUtf8(utf8Text));
  const wchar_t* strings[] = {text.c_str()};
  ::ReportEventW(source, EVENTLOG_ERROR_TYPE, 0, 0, nullptr, 1, 0, strings, nullptr);
  ::DeregisterEventSource(source);
}

namespace {
thread_local std::string lastModuleError;

std::string SystemMessage(DWORD code) {
  return base::ToUtf8(SystemErrorText(code)) + " (" + std::to_string(code) + ")";
}
}  // namespace

void* LoadModuleFile(const String& path) {
  HMODULE module = ::LoadLibraryW(SystemPath(path).c_str());
  if (!module) lastModuleError = SystemMessage(::GetLastError());
  return reinterpret_cast<void*>(module);
}

void* FindModuleSymbol(void* module, const char* name) {
  FARPROC symbol = ::GetProcAddress(static_cast<HMODULE>(module), name);
  if (!symbol) lastModuleError = std::string("no symbol ") + name;
  void* address = nullptr;
  static_assert(sizeof address == sizeof symbol, "a function address fits a data pointer");
  std::memcpy(&address, &symbol, sizeof address);
  return address;
}

void UnloadModuleFile(void* module) { ::FreeLibrary(static_cast<HMODULE>(module)); }

std::string LastModuleError() { return lastModuleError; }

int32_t AtomicIncrement(int32_t* value) { return ::InterlockedIncrement(reinterpret_cast<volatile LONG*>(value)); }
int32_t AtomicDecrement(int32_t* value) { return ::InterlockedDecrement(reinterpret_cast<volatile LONG*>(value)); }

namespace {
const UINT kCodePage936 = 936;
}  // namespace

std::string ToCodePage936(const String& text) {
  // A character beyond the BMP has no GBK form: one '?' for the pair, as for any other.
  std::wstring units;
  units.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    const bool pair = unit >= 0xD800 && unit <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                      text[i + 1] <= 0xDFFF;
    units += pair ? L'?' : static_cast<wchar_t>(unit);
    if (pair) ++i;
  }
  if (units.empty()) return std::string();
  const int size = ::WideCharToMultiByte(kCodePage936, 0, units.data(), static_cast<int>(units.size()), nullptr, 0,
                                         "?", nullptr);
  std::string out(static_cast<size_t>(size > 0 ? size : 0), '\0');
  if (size > 0)
    ::WideCharToMultiByte(kCodePage936, 0, units.data(), static_cast<int>(units.size()), &out[0], size, "?", nullptr);
  return out;
}

String FromCodePage936(const std::string& bytes) {
  if (bytes.empty()) return String();
  const int size = ::MultiByteToWideChar(kCodePage936, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(size > 0 ? size : 0), L'\0');
  if (size > 0)
    ::MultiByteToWideChar(kCodePage936, 0, bytes.data(), static_cast<int>(bytes.size()), &out[0], size);
  return FromWide(out);
}

}  // namespace platform
