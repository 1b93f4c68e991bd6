/* How the C host opens a module file and finds its entry point on each system. */
#ifndef DOCMGR_TESTS_HOST_MODULE_LOADER_H
#define DOCMGR_TESTS_HOST_MODULE_LOADER_H

/* Null on failure, after printing the system's reason. */
void* HostOpenModule(const char* file);
void* HostFindSymbol(void* module, const char* name);
void HostCloseModule(void* module);

#endif
