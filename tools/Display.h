// How the tool shows values to a person: local times, names for codes, sizes, counted
// nouns, and texts whose control characters could break a table or a terminal.
#pragma once

#include <cstdint>
#include <string>

// Seconds since 1970 as local time ("2026-01-01 08:01:00"); "-" for 0 or less.
std::string LocalTimeText(int64_t seconds);
// Control characters as escapes ("\n", "\t", "\x1b"), so one value stays on one line.
std::string Printable(const std::string& text);
// "1 item", "2 items" (the nouns go through the translation).
std::string Counted(uint64_t count, const char* one, const char* many);
// A size: bytes below 10 KiB, else KiB/MiB/GiB/TiB with one decimal.
std::string SizeText(int64_t size);

// The task codes the tool and its demo write into the sync log.
enum LogTask : int32_t {
  kTaskDownloaded = 1,
  kTaskUploaded = 2,
  kTaskRenamed = 3,
  kTaskDeleted = 4,
  kTaskRecordedLocally = 5,  // scan: an item found on disk
  kTaskRecordRemoved = 6,    // scan: the record of an item gone from disk
};
std::string TaskName(int32_t task);
std::string LogTypeName(int logType);
std::string TransferStatusName(int32_t status);
