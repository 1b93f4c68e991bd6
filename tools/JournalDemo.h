// The demo's walk through the journals: sync-log entries, and an interrupted upload resumed
// block by block.
#pragma once

#include <string>

#include "CliContext.h"

int DemoJournals(CliContext& context, const std::string& root);
