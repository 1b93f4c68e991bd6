#include "Display.h"

#include <cstdio>
#include <ctime>

#include "Translation.h"
#include "platform/ncPlatform.h"

std::string LocalTimeText(int64_t seconds) {
  if (seconds <= 0) return "-";
  platform::LocalTime local;
  if (!platform::ToLocalTime(seconds, local)) return std::to_string(seconds);
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", local.year, local.month, local.day, local.hour,
                local.minute, local.second);
  return text;
}

std::string Printable(const std::string& text) {
  std::string out;
  for (const unsigned char c : text) {
    if (c == '\n') out += "\\n";
    else if (c == '\t') out += "\\t";
    else if (c == '\r') out += "\\r";
    else if (c < 0x20 || c == 0x7F) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", c);
      out += escaped;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

std::string Counted(uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + Tr(count == 1 ? one : many);
}

std::string SizeText(int64_t size) {
  if (size < 10 * 1024) return std::to_string(size) + " B";
  const char* units[] = {"KiB", "MiB", "GiB", "TiB"};
  double value = static_cast<double>(size) / 1024;
  int unit = 0;
  while (value >= 1024 && unit < 3) {
    value /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %s", value, units[unit]);
  return text;
}

std::string TaskName(int32_t task) {
  switch (task) {
    case kTaskDownloaded: return Tr("downloaded");
    case kTaskUploaded: return Tr("uploaded");
    case kTaskRenamed: return Tr("renamed");
    case kTaskDeleted: return Tr("deleted");
    case kTaskRecordedLocally: return Tr("found locally");
    case kTaskRecordRemoved: return Tr("record removed");
    default: return Tr("task") + std::string(" ") + std::to_string(task);
  }
}

std::string LogTypeName(int logType) {
  switch (logType) {
    case 0: return Tr("sync events");
    case 3: return Tr("unsynchronised items");
    default: return Tr("log type") + std::string(" ") + std::to_string(logType);
  }
}

std::string TransferStatusName(int32_t status) {
  switch (status) {
    case 0: return Tr("queued");
    case 1: return Tr("in progress");
    case 2: return Tr("paused");
    default: return Tr("status") + std::string(" ") + std::to_string(status);
  }
}
