#include "base/Trace.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "base/Clock.h"
#include "docmgr/Exception.h"
#include "base/Thread.h"

namespace base {

bool Trace::on_ = false;

namespace {

std::mutex& SinkLock() {
  static std::mutex lock;
  return lock;
}

FILE*& Sink() {
  static FILE* sink = nullptr;
  return sink;
}

struct TraceFromEnvironment {
  TraceFromEnvironment() {
    if (const char* target = std::getenv("KESTROVE_TRACE")) Trace::configure(target);
  }
} traceFromEnvironment;

}  // namespace

void Trace::configure(const std::string& target) {
  std::lock_guard<std::mutex> guard(SinkLock());
  FILE*& sink = Sink();
  if (sink && sink != stderr) std::fclose(sink);
  sink = nullptr;
  if (target == "stderr") sink = stderr;
  else if (!target.empty()) sink = std::fopen(target.c_str(), "ab");  // lines end in "\n" everywhere
  on_ = sink != nullptr;
}

std::string Trace::qualifiedName(const char* prettyFunction) {
  std::string text(prettyFunction ? prettyFunction : "");
  size_t open = text.find('(');
  if (open == std::string::npos) return text;
  // Skip an "operator()" style name and templates while looking for the space before the name.
  size_t start = text.rfind(' ', open);
  start = start == std::string::npos ? 0 : start + 1;
  while (start < open && (text[start] == '*' || text[start] == '&')) ++start;
  return text.substr(start, open - start);
}

void Trace::write(const char* module, const char* file, int line, const char* prettyFunction,
                  const String& message) {
  const LocalTime now = Clock::localTime();
  const std::string where = ToUtf8(SourcePath(file));
  const std::string text = ToUtf8(message);
  std::lock_guard<std::mutex> guard(SinkLock());
  FILE* sink = Sink();
  if (!sink) return;
  std::fprintf(sink, "%04d-%02d-%02d %02d:%02d:%02d.%03d [%lu] %s %s:%d %s %s\n", now.year, now.month, now.day,
               now.hour, now.minute, now.second, now.millisecond,
               static_cast<unsigned long>(Thread::currentId()), module, where.c_str(), line,
               qualifiedName(prettyFunction).c_str(), text.c_str());
  std::fflush(sink);
}

}  // namespace base
