// A module built from a static description of its components (NS_NewGenericModule2).
#pragma once

#include "xpcom/nsIComponentManager.h"

typedef nsresult (*NSConstructorProcPtr)(nsISupports* outer, const nsIID& iid, void** result);
typedef nsresult (*NSRegisterSelfProcPtr)(nsIComponentManager*, nsIFile*, const char*, const char*,
                                          const struct nsModuleComponentInfo*);
typedef nsresult (*NSUnregisterSelfProcPtr)(nsIComponentManager*, nsIFile*, const char*,
                                            const struct nsModuleComponentInfo*);
typedef void (*NSFactoryDestructorProcPtr)();
typedef nsresult (*NSGetInterfacesProcPtr)(uint32_t* count, nsIID*** array);
typedef nsresult (*NSGetLanguageHelperProcPtr)(uint32_t language, nsISupports** helper);
typedef nsresult (*nsModuleConstructorProc)(struct nsModuleInfo* self);
typedef void (*nsModuleDestructorProc)(struct nsModuleInfo* self);

struct nsModuleComponentInfo {
  const char* mDescription;
  nsCID mCID;
  const char* mContractID;
  NSConstructorProcPtr mConstructor;
  NSRegisterSelfProcPtr mRegisterSelfProc;
  NSUnregisterSelfProcPtr mUnregisterSelfProc;
  NSFactoryDestructorProcPtr mFactoryDestructor;
  NSGetInterfacesProcPtr mGetInterfacesProc;
  NSGetLanguageHelperProcPtr mGetLanguageHelperProc;
  void** mClassInfoGlobal;
  uint32_t mFlags;
};

#define NS_MODULEINFO_VERSION 0x00015000

struct nsModuleInfo {
  uint32_t mVersion;
  const char* mModuleName;
  const nsModuleComponentInfo* mComponents;
  uint32_t mCount;
  nsModuleConstructorProc mCtor;
  nsModuleDestructorProc mDtor;
};

nsresult NS_NewGenericModule2(const nsModuleInfo* info, nsIModule** result);
