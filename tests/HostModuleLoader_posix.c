#include "HostModuleLoader.h"

#include <dlfcn.h>
#include <stdio.h>

void* HostOpenModule(const char* file) {
  void* module = dlopen(file, RTLD_NOW | RTLD_LOCAL);
  if (!module) fprintf(stderr, "%s\n", dlerror());
  return module;
}

void* HostFindSymbol(void* module, const char* name) { return dlsym(module, name); }

void HostCloseModule(void* module) { dlclose(module); }
