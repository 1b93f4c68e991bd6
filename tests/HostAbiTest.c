/* A host written in C against the frozen component-model layouts, as a client built with
 * another compiler or language sees the module: it has nothing of ours but the module file.
 * It declares its own vtables (three nsISupports slots, then each interface's operations),
 * lends the module a registrar of its own, and walks the module's life: registration,
 * factories, creation, aggregation refusal, query-interface, reference counts, factory
 * locks, the unload test, release.
 *
 * Usage: docmgr_host_abi_test MODULE_FILE. Exit status 0 when every check holds. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "HostModuleLoader.h"

typedef uint32_t nsresult;
typedef uint32_t nsrefcnt;
typedef int32_t PRBool;

typedef struct {
  uint32_t m0;
  uint16_t m1;
  uint16_t m2;
  uint8_t m3[8];
} nsID;

#define NS_OK 0u
#define NS_ERROR_NOT_IMPLEMENTED 0x80004001u
#define NS_ERROR_NO_INTERFACE 0x80004002u
#define NS_ERROR_NO_AGGREGATION 0x80040110u

static const nsID kISupports = {0x00000000, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
static const nsID kIFactory = {0x00000001, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
static const nsID kIComponentManager = {0xa88e5a60, 0x205a, 0x4bb1, {0x94, 0xe1, 0x26, 0x28, 0xda, 0xf5, 0x1e, 0xae}};
static const nsID kIComponentRegistrar = {0x2417cbfe, 0x65ad, 0x48a6, {0xb4, 0xb6, 0xeb, 0x84, 0xdb, 0x17, 0x43, 0x92}};
static const nsID kIDocMgr = {0x3542FFA8, 0x555D, 0x4145, {0x8E, 0xE1, 0x30, 0x83, 0x98, 0xD1, 0xE1, 0xDE}};
static const nsID kIUpgradeMgr = {0x0ECE697F, 0x872F, 0x4CD6, {0xA7, 0x0F, 0x59, 0x17, 0xC4, 0xBF, 0xAE, 0x8B}};
static const nsID kIPathMgr = {0x05761C84, 0x5BBD, 0x47EA, {0x93, 0xCB, 0x00, 0xCA, 0x5E, 0xF1, 0x2F, 0xE1}};
static const nsID kDocMgrCid = {0xF93DE3A8, 0xAAED, 0x42A0, {0x95, 0x87, 0xED, 0x94, 0x83, 0x6C, 0x49, 0x8E}};
static const nsID kUpgradeMgrCid = {0x8AAB4F36, 0x76A4, 0x4396, {0x8F, 0x47, 0x25, 0x86, 0x44, 0xFB, 0x8F, 0x53}};

/* ---- the frozen vtables ---------------------------------------------------------------- */

#define NS_ISUPPORTS_SLOTS(Self)                                          \
  nsresult (*QueryInterface)(Self * self, const nsID * iid, void** result); \
  nsrefcnt (*AddRef)(Self * self);                                         \
  nsrefcnt (*Release)(Self * self)

typedef struct nsISupports {
  const struct nsISupportsVtbl* vtbl;
} nsISupports;
struct nsISupportsVtbl {
  NS_ISUPPORTS_SLOTS(nsISupports);
};

typedef struct nsIFactory {
  const struct nsIFactoryVtbl* vtbl;
} nsIFactory;
struct nsIFactoryVtbl {
  NS_ISUPPORTS_SLOTS(nsIFactory);
  nsresult (*CreateInstance)(nsIFactory* self, nsISupports* outer, const nsID* iid, void** result);
  nsresult (*LockFactory)(nsIFactory* self, PRBool lock);
};

typedef struct Host Host;

typedef struct nsIModule {
  const struct nsIModuleVtbl* vtbl;
} nsIModule;
struct nsIModuleVtbl {
  NS_ISUPPORTS_SLOTS(nsIModule);
  nsresult (*GetClassObject)(nsIModule* self, void* compMgr, const nsID* cid, const nsID* iid, void** result);
  nsresult (*RegisterSelf)(nsIModule* self, void* compMgr, void* location, const char* loaderStr,
                           const char* type);
  nsresult (*UnregisterSelf)(nsIModule* self, void* compMgr, void* location, const char* loaderStr);
  nsresult (*CanUnload)(nsIModule* self, void* compMgr, PRBool* result);
};

/* ncIDocMgr: slot 10 is IsNewView; ncIUpgradeMgr: slot 5 is NeedUpgrade (C++ bool results). */
typedef struct Component {
  void* const* vtbl;
} Component;

/* ---- the host's component manager and registrar: two interfaces of one object ---------- */

enum { kMaxRegistrations = 4 };

typedef struct Registration {
  nsID cid;
  char className[64];
  char contractId[128];
} Registration;

typedef struct Manager {
  const struct ManagerVtbl* vtbl;
  Host* host;
} Manager;
struct ManagerVtbl {
  NS_ISUPPORTS_SLOTS(Manager);
  nsresult (*GetClassObject)(Manager*, const nsID*, const nsID*, void**);
  nsresult (*GetClassObjectByContractID)(Manager*, const char*, const nsID*, void**);
  nsresult (*CreateInstance)(Manager*, const nsID*, nsISupports*, const nsID*, void**);
  nsresult (*CreateInstanceByContractID)(Manager*, const char*, nsISupports*, const nsID*, void**);
};

typedef struct Registrar {
  const struct RegistrarVtbl* vtbl;
  Host* host;
} Registrar;
struct RegistrarVtbl {
  NS_ISUPPORTS_SLOTS(Registrar);
  nsresult (*AutoRegister)(Registrar*, void*);
  nsresult (*AutoUnregister)(Registrar*, void*);
  nsresult (*RegisterFactory)(Registrar*, const nsID*, const char*, const char*, void*);
  nsresult (*UnregisterFactory)(Registrar*, const nsID*, void*);
  nsresult (*RegisterFactoryLocation)(Registrar*, const nsID*, const char*, const char*, void*, const char*,
                                      const char*);
  nsresult (*UnregisterFactoryLocation)(Registrar*, const nsID*, void*);
  nsresult (*IsCIDRegistered)(Registrar*, const nsID*, PRBool*);
  nsresult (*IsContractIDRegistered)(Registrar*, const char*, PRBool*);
  nsresult (*EnumerateCIDs)(Registrar*, void**);
  nsresult (*EnumerateContractIDs)(Registrar*, void**);
  nsresult (*CIDToContractID)(Registrar*, const nsID*, char**);
  nsresult (*ContractIDToCID)(Registrar*, const char*, nsID**);
};

struct Host {
  Manager manager;
  Registrar registrar;
  nsrefcnt references;
  int unexpectedCalls;
  int registered;
  Registration registrations[kMaxRegistrations];
};

static int failures = 0;

#define CHECK(condition)                                                  \
  do {                                                                    \
    if (!(condition)) {                                                   \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                         \
    }                                                                     \
  } while (0)

static int SameId(const nsID* a, const nsID* b) { return memcmp(a, b, sizeof(nsID)) == 0; }

static nsresult HostQueryInterface(Host* host, const nsID* iid, void** result) {
  if (SameId(iid, &kIComponentManager) || SameId(iid, &kISupports)) *result = &host->manager;
  else if (SameId(iid, &kIComponentRegistrar)) *result = &host->registrar;
  else {
    *result = NULL;
    return NS_ERROR_NO_INTERFACE;
  }
  ++host->references;
  return NS_OK;
}

static nsresult ManagerQueryInterface(Manager* self, const nsID* iid, void** result) {
  return HostQueryInterface(self->host, iid, result);
}
static nsrefcnt ManagerAddRef(Manager* self) { return ++self->host->references; }
static nsrefcnt ManagerRelease(Manager* self) { return --self->host->references; }
static nsresult ManagerUnexpected(Manager* self) {
  ++self->host->unexpectedCalls;
  return NS_ERROR_NOT_IMPLEMENTED;
}

static nsresult RegistrarQueryInterface(Registrar* self, const nsID* iid, void** result) {
  return HostQueryInterface(self->host, iid, result);
}
static nsrefcnt RegistrarAddRef(Registrar* self) { return ++self->host->references; }
static nsrefcnt RegistrarRelease(Registrar* self) { return --self->host->references; }
static nsresult RegistrarUnexpected(Registrar* self) {
  ++self->host->unexpectedCalls;
  return NS_ERROR_NOT_IMPLEMENTED;
}

static nsresult RegisterFactoryLocation(Registrar* self, const nsID* cid, const char* className,
                                        const char* contractId, void* file, const char* loaderStr,
                                        const char* type) {
  Host* host = self->host;
  (void)file;
  (void)loaderStr;
  (void)type;
  if (host->registered == kMaxRegistrations) return NS_ERROR_NOT_IMPLEMENTED;
  Registration* entry = &host->registrations[host->registered++];
  entry->cid = *cid;
  snprintf(entry->className, sizeof entry->className, "%s", className ? className : "");
  snprintf(entry->contractId, sizeof entry->contractId, "%s", contractId ? contractId : "");
  return NS_OK;
}

/* Every slot the module should not call counts as unexpected: a module that calls slot 7
 * for RegisterFactoryLocation and nothing else is laid out as the host is. */
/* A stub stands in any slot whatever the slot's arguments (they are ignored). */
#define ANY_SLOT(type, function) ((type)(void (*)(void))(function))

static const struct ManagerVtbl kManagerVtbl = {
    ManagerQueryInterface,
    ManagerAddRef,
    ManagerRelease,
    ANY_SLOT(nsresult(*)(Manager*, const nsID*, const nsID*, void**), ManagerUnexpected),
    ANY_SLOT(nsresult(*)(Manager*, const char*, const nsID*, void**), ManagerUnexpected),
    ANY_SLOT(nsresult(*)(Manager*, const nsID*, nsISupports*, const nsID*, void**), ManagerUnexpected),
    ANY_SLOT(nsresult(*)(Manager*, const char*, nsISupports*, const nsID*, void**), ManagerUnexpected),
};

static const struct RegistrarVtbl kRegistrarVtbl = {
    RegistrarQueryInterface,
    RegistrarAddRef,
    RegistrarRelease,
    ANY_SLOT(nsresult(*)(Registrar*, void*), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, void*), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, const nsID*, const char*, const char*, void*), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, const nsID*, void*), RegistrarUnexpected),
    RegisterFactoryLocation,
    ANY_SLOT(nsresult(*)(Registrar*, const nsID*, void*), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, const nsID*, PRBool*), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, const char*, PRBool*), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, void**), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, void**), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, const nsID*, char**), RegistrarUnexpected),
    ANY_SLOT(nsresult(*)(Registrar*, const char*, nsID**), RegistrarUnexpected),
};

/* ---- the checks ------------------------------------------------------------------------ */

/* A PRBool out parameter must be written whole: four bytes of 0 or 1. */
static PRBool CanUnload(nsIModule* module, Host* host) {
  PRBool result = (PRBool)0x7F7F7F7F;
  CHECK(module->vtbl->CanUnload(module, &host->manager, &result) == NS_OK);
  CHECK(result == 0 || result == 1);
  return result;
}

typedef unsigned char (*BoolSlot)(Component* self);

/* One component through its factory: aggregation refused, creation, query-interface,
 * reference counts, one call at a slot of its own interface, release. */
static void CheckComponent(nsIModule* module, Host* host, const nsID* cid, const nsID* iid, int boolSlot) {
  nsIFactory* factory = NULL;
  CHECK(module->vtbl->GetClassObject(module, &host->manager, cid, &kIFactory, (void**)&factory) == NS_OK);
  if (!factory) return;

  nsISupports outer = {NULL};
  void* refused = (void*)0x1;
  CHECK(factory->vtbl->CreateInstance(factory, &outer, &kISupports, &refused) == NS_ERROR_NO_AGGREGATION);
  CHECK(refused == NULL);

  CHECK(factory->vtbl->LockFactory(factory, 1) == NS_OK);
  nsISupports* object = NULL;
  CHECK(factory->vtbl->CreateInstance(factory, NULL, iid, (void**)&object) == NS_OK);
  CHECK(CanUnload(module, host) == 0);
  CHECK(factory->vtbl->LockFactory(factory, 0) == NS_OK);
  if (object) {
    CHECK(object->vtbl->AddRef(object) == 2);
    CHECK(object->vtbl->Release(object) == 1);
    nsISupports* same = NULL;
    CHECK(object->vtbl->QueryInterface(object, &kISupports, (void**)&same) == NS_OK);
    CHECK(same == object);
    CHECK(object->vtbl->Release(object) == 1);
    void* none = (void*)0x1;
    CHECK(object->vtbl->QueryInterface(object, &kIPathMgr, &none) == NS_ERROR_NO_INTERFACE);
    CHECK(none == NULL);
    Component* component = (Component*)object;
    CHECK(((BoolSlot)component->vtbl[boolSlot])(component) == 0);
    CHECK(CanUnload(module, host) == 0);
    CHECK(object->vtbl->Release(object) == 0);
  }
  CHECK(factory->vtbl->Release(factory) == 0);
}

typedef nsresult (*GetModuleProc)(void* compMgr, void* location, nsIModule** result);

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s MODULE_FILE\n", argv[0]);
    return 2;
  }
  void* file = HostOpenModule(argv[1]);
  if (!file) return 1;
  GetModuleProc getModule;
  void* symbol = HostFindSymbol(file, "NSGetModule");
  CHECK(symbol != NULL);
  if (!symbol) return 1;
  memcpy(&getModule, &symbol, sizeof getModule);

  Host host;
  memset(&host, 0, sizeof host);
  host.manager.vtbl = &kManagerVtbl;
  host.manager.host = &host;
  host.registrar.vtbl = &kRegistrarVtbl;
  host.registrar.host = &host;
  host.references = 1;

  nsIModule* module = NULL;
  CHECK(getModule(&host.manager, NULL, &module) == NS_OK);
  if (!module) return 1;
  CHECK(module->vtbl->RegisterSelf(module, &host.manager, NULL, argv[1], "native") == NS_OK);
  CHECK(host.registered == 2);
  CHECK(SameId(&host.registrations[0].cid, &kUpgradeMgrCid));
  CHECK(strcmp(host.registrations[0].className, "ncUpgradeMgr") == 0);
  CHECK(strcmp(host.registrations[0].contractId, "@kestrove.org/kestrove3.5/upgrademgr;1") == 0);
  CHECK(SameId(&host.registrations[1].cid, &kDocMgrCid));
  CHECK(strcmp(host.registrations[1].className, "ncDocMgr") == 0);
  CHECK(strcmp(host.registrations[1].contractId, "@kestrove.org/kestrove3.5/docmgr;1") == 0);

  CheckComponent(module, &host, &kUpgradeMgrCid, &kIUpgradeMgr, 5);  /* NeedUpgrade */
  CheckComponent(module, &host, &kDocMgrCid, &kIDocMgr, 10);         /* IsNewView */

  CHECK(CanUnload(module, &host) == 1);
  CHECK(host.unexpectedCalls == 0);
  CHECK(host.references == 1);  /* every reference the module took is given back */
  CHECK(module->vtbl->Release(module) == 0);
  HostCloseModule(file);
  if (failures) fprintf(stderr, "%d check(s) failed\n", failures);
  else printf("the module keeps the frozen layouts\n");
  return failures ? 1 : 0;
}
