// A module built from a static description of its components (NS_NewGenericModule2).
#pragma once

#include "docmgr/nsIModule.h"

class nsIClassInfo;

typedef nsresult (*NSConstructorProcPtr)(nsISupports* outer, const nsIID& iid, void** result);
typedef nsresult (*NSRegisterSelfProcPtr)(nsIComponentManager*, nsIFile*, const char*, const char*,
                                          const struct nsModuleComponentInfo*);
typedef nsresult (*NSUnregisterSelfProcPtr)(nsIComponentManager*, nsIFile*, const char*,
                                            const struct nsModuleComponentInfo*);
typedef void (*NSFactoryDestructorProcPtr)();
typedef nsresult (*NSGetInterfacesProcPtr)(PRUint32* count, nsIID*** array);
typedef nsresult (*NSGetLanguageHelperProcPtr)(PRUint32 language, nsISupports** helper);
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
  nsIClassInfo** mClassInfoGlobal;
  PRUint32 mFlags;
};

#define NS_MODULEINFO_VERSION 0x00015000

struct nsModuleInfo {
  PRUint32 mVersion;
  const char* mModuleName;
  const nsModuleComponentInfo* mComponents;
  PRUint32 mCount;
  nsModuleConstructorProc mCtor;
  nsModuleDestructorProc mDtor;
};

nsresult NS_NewGenericModule2(const nsModuleInfo* info, nsIModule** result);
