// The demo's walk through the document cache: a scan, listings, new local files found by a
// second scan, a record, searches by initials, and what has not reached the server.
#pragma once

#include <string>

#include "CliContext.h"

int DemoCache(CliContext& context, const std::string& root);
