#include "xpcom/nsTableDrivenQI.h"

nsresult NS_TableDrivenQI(void* self, const QITableEntry* table, const nsIID& iid, void** result) {
  if (!result) return NS_ERROR_NULL_POINTER;
  for (const QITableEntry* entry = table; entry && entry->iid; ++entry) {
    if (entry->iid->Equals(iid)) {
      nsISupports* found = reinterpret_cast<nsISupports*>(static_cast<char*>(self) + entry->offset);
      found->AddRef();
      *result = found;
      return NS_OK;
    }
  }
  *result = nullptr;
  return NS_ERROR_NO_INTERFACE;
}
