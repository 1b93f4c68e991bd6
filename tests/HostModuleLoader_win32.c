#include "HostModuleLoader.h"

#include <windows.h>
#include <stdio.h>
#include <string.h>

void* HostOpenModule(const char* file) {
  HMODULE module = LoadLibraryA(file);
  if (!module) fprintf(stderr, "%s: cannot load (error %lu)\n", file, (unsigned long)GetLastError());
  return (void*)module;
}

void* HostFindSymbol(void* module, const char* name) {
  FARPROC symbol = GetProcAddress((HMODULE)module, name);
  void* address = NULL;
  memcpy(&address, &symbol, sizeof address);
  return address;
}

void HostCloseModule(void* module) { FreeLibrary((HMODULE)module); }
