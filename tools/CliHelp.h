// Help made from the command table: the overview, one command's usage, and the manual page.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

void PrintUsage(FILE* out);
// help, help COMMAND, help --man (the manual page in troff on standard output).
int Help(const std::vector<std::string>& args);
