// Tracing: off by default; when off a trace point costs one branch. KESTROVE_TRACE=stderr
// or KESTROVE_TRACE=/path/file turns it on. A line holds the time, the thread, the module,
// file:line, the qualified method and the formatted arguments.
#pragma once

#include "text/String.h"

namespace base {

class Trace {
 public:
  static bool isOn() { return on_; }
  // Target "stderr", a file path, or empty to turn tracing off.
  static void configure(const std::string& target);
  static void write(const char* module, const char* file, int line, const char* prettyFunction,
                    const String& message);
  // "ncCacheMgr::UpdateState" from a compiler's pretty function name.
  static std::string qualifiedName(const char* prettyFunction);

 private:
  static bool on_;
};

}  // namespace base

#define NC_TRACE_IN(module, ...)                                                           \
  do {                                                                                     \
    if (::base::Trace::isOn())                                                             \
      ::base::Trace::write(module, __FILE__, __LINE__, __PRETTY_FUNCTION__, ::base::Format(__VA_ARGS__)); \
  } while (0)
