// Query-interface through a table of (interface id, offset of that interface in the object).
#pragma once

#include <cstddef>

#include "docmgr/nsISupports.h"

struct QITableEntry {
  const nsIID* iid;  // null ends the table
  int32_t offset;
};

nsresult NS_TableDrivenQI(void* self, const QITableEntry* table, const nsIID& iid, void** result);

// Offset of the interface Base inside Class (0 for single inheritance).
#define NS_INTERFACE_OFFSET(Class, Base) \
  int32_t(reinterpret_cast<char*>(static_cast<Base*>(reinterpret_cast<Class*>(0x1000))) - reinterpret_cast<char*>(0x1000))
