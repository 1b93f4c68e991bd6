// The one exception type of the component: where it was thrown, what happened, a numeric
// code, the error provider that owns the code, and an optional cause.
#pragma once

#include <exception>
#include <memory>
#include <string>

#include "docmgr/String.h"

namespace base {

class Exception : public std::exception {
 public:
  static const char16_t* const kSystemProvider;  // u"system": codes are Win32 error codes

  Exception(const char* file, int line, String message, int code, String provider,
            std::shared_ptr<const Exception> cause = nullptr);

  // An OS failure: the Win32-style code and the platform's text for it, with the
  // path or operation it concerns.
  static Exception System(const char* file, int line, unsigned int win32Code, const String& context);

  const String& getFile() const { return file_; }
  int getLine() const { return line_; }
  const String& getMessage() const { return message_; }
  int getCode() const { return code_; }
  const String& getProvider() const { return provider_; }
  const std::shared_ptr<const Exception>& getCause() const { return cause_; }
  bool isSystemError() const { return provider_ == kSystemProvider; }

  // Message, then "(provider code)" and the cause chain, for logs and tools.
  String toFullText() const;
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  String file_;
  int line_;
  String message_;
  int code_;
  String provider_;
  std::shared_ptr<const Exception> cause_;
  std::string what_;
};

// The part of a source path from "src/" on, as exceptions and traces show it.
String SourcePath(const char* file);

}  // namespace base

#define BASE_SYSTEM_ERROR(win32Code, context) ::base::Exception::System(__FILE__, __LINE__, (win32Code), (context))
