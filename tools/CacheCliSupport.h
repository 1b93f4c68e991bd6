// Helpers shared by the commands that show and fill a sync root's document cache
// (scan, ls, info, search, unsync).
#pragma once

#include <string>

#include "CliContext.h"
#include "Display.h"
#include "docmgr/ncICacheMgr.h"
#include "docmgr/ncIPathMgr.h"

// The name of a sync root's data directory.
extern const char kDataDirectoryName[];

// The absolute path of ROOT after checking that it is a folder; with requireState also that
// it already has local state (a data directory). Throws std::runtime_error with a one-line
// message otherwise.
std::string CheckSyncRoot(const std::string& root, bool requireState);
// The nearest folder at or above path that holds a data directory, or "".
std::string FindSyncRoot(const std::string& absolutePath);

// The main root's managers, with their references.
nsCOMPtr<ncIPathMgr> MainPathMgr(ncIDocMgr* docMgr);
nsCOMPtr<ncICacheMgr> MainCacheMgr(ncIDocMgr* docMgr);

// A relative path as typed ("a/b", "a\b", "/a/b/") in the stored form ("a\b").
base::String StoredRelPath(const std::string& text);
// "a\b" shown as "a/b", control characters escaped.
std::string ShownRelPath(const base::String& relPath);
// "a\b" as "a/b", as JSON output carries it.
std::string SlashedPath(const base::String& relPath);

// The word for a cache state (synced, delayed, unsynced) or its number.
std::string StateText(int32_t state);
// Text padded with blanks to a display width (CJK characters count two columns).
std::string Pad(const std::string& text, size_t width);
