#include "docmgr/Exception.h"

#include <cstring>

#include "platform/ncPlatform.h"

namespace base {

const char16_t* const Exception::kSystemProvider = u"system";

String SourcePath(const char* file) {
  if (!file) return String();
  const char* start = file;
  for (const char* hit = std::strstr(file, "src/"); hit; hit = std::strstr(hit + 1, "src/"))
    if (hit == file || hit[-1] == '/') start = hit;
  return FromUtf8(start);
}

Exception::Exception(const char* file, int line, String message, int code, String provider,
                     std::shared_ptr<const Exception> cause)
    : file_(SourcePath(file)), line_(line), message_(std::move(message)), code_(code),
      provider_(std::move(provider)), cause_(std::move(cause)), what_(ToUtf8(message_)) {}

Exception Exception::System(const char* file, int line, unsigned int win32Code, const String& context) {
  String message = platform::SystemErrorText(win32Code);
  if (!context.empty()) message += u" (" + context + u")";
  return Exception(file, line, message, static_cast<int>(win32Code), kSystemProvider);
}

String Exception::toFullText() const {
  String text = Format(u"%s (%s %d, %s:%d)", message_, provider_, code_, file_, line_);
  if (cause_) text += u"; caused by: " + cause_->toFullText();
  return text;
}

}  // namespace base
