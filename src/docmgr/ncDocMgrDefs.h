// Tracing, errors and argument checks shared by the classes of the component.
#pragma once

#include "docmgr/Exception.h"
#include "base/Path.h"
#include "text/String.h"
#include "base/Trace.h"
#include "xpcom/nsRefCount.h"
#include "xpcom/nsTableDrivenQI.h"

#define NC_DOCMGR_PROVIDER u"docmgr"

// Trace point of the module "docmgr": NC_TRACE(u"relPath: %s", relPath).
#define NC_TRACE(...) NC_TRACE_IN("docmgr", __VA_ARGS__)

// Throws the component's exception: NC_THROW(2, u"Path (%s) is INVALID.", path).
#define NC_THROW(code, ...) \
  throw ::base::Exception(__FILE__, __LINE__, ::base::Format(__VA_ARGS__), (code), NC_DOCMGR_PROVIDER)

// Error codes of the component.
enum ncDocMgrError {
  NC_ERR_DATABASE = 1,      // a database failure or a required row missing
  NC_ERR_INVALID_ARG = 2,   // an invalid path, id or argument
  NC_ERR_SET_ADS = 4,       // setting a file tag failed
  NC_ERR_REMOVE_ADS = 5,    // removing a file tag failed
};

// The Win32 prefix of a long path. The platform layer adds and removes it; the component
// only has to recognise it.
const char16_t NC_LONG_PATH_PREFIX[] = u"\\\\?\\";

// A path is valid when it is not empty and either well formed or carrying the long-path
// prefix at its start.
inline bool ncIsValidPath(const base::String& path) {
  return !path.empty() && (base::Path::isValidPath(path) || base::StartsWith(path, NC_LONG_PATH_PREFIX));
}

#define NC_CHECK_PATH(path)                                                \
  do {                                                                     \
    if (!ncIsValidPath(path)) NC_THROW(NC_ERR_INVALID_ARG, u"Path (%s) is INVALID.", (path)); \
  } while (0)

#define NC_CHECK_NOT_NULL(pointer, name)                                    \
  do {                                                                      \
    if (!(pointer)) NC_THROW(NC_ERR_INVALID_ARG, u"Argument (%s) is NULL.", name); \
  } while (0)

// nsISupports of the module's internal objects: table-driven query for one interface,
// atomic counts, and on the last release the memory goes back to the module allocator.
#define NC_DECL_ISUPPORTS                                           \
 public:                                                            \
  NS_IMETHOD QueryInterface(const nsIID& iid, void** result) override; \
  NS_IMETHOD_(nsrefcnt) AddRef() override;                          \
  NS_IMETHOD_(nsrefcnt) Release() override;                         \
                                                                    \
 protected:                                                         \
  nsRefCount mRefCnt;                                               \
                                                                    \
 public:

#define NC_IMPL_QUERY_INTERFACE1(Class, Interface)                                           \
  NS_IMETHODIMP Class::QueryInterface(const nsIID& iid, void** result) {                     \
    static const QITableEntry table[] = {{&NS_GET_IID(Interface), NS_INTERFACE_OFFSET(Class, Interface)}, \
                                         {&NS_GET_IID(nsISupports), NS_INTERFACE_OFFSET(Class, Interface)}, \
                                         {nullptr, 0}};                                      \
    return NS_TableDrivenQI(this, table, iid, result);                                      \
  }

// The same for a class with a second interface; nsISupports is answered by the first.
#define NC_IMPL_QUERY_INTERFACE2(Class, Interface1, Interface2)                                \
  NS_IMETHODIMP Class::QueryInterface(const nsIID& iid, void** result) {                     \
    static const QITableEntry table[] = {{&NS_GET_IID(Interface1), NS_INTERFACE_OFFSET(Class, Interface1)}, \
                                         {&NS_GET_IID(Interface2), NS_INTERFACE_OFFSET(Class, Interface2)}, \
                                         {&NS_GET_IID(nsISupports), NS_INTERFACE_OFFSET(Class, Interface1)}, \
                                         {nullptr, 0}};                                      \
    return NS_TableDrivenQI(this, table, iid, result);                                      \
  }

// The same for a class with a third interface.
#define NC_IMPL_QUERY_INTERFACE3(Class, Interface1, Interface2, Interface3)                    \
  NS_IMETHODIMP Class::QueryInterface(const nsIID& iid, void** result) {                     \
    static const QITableEntry table[] = {{&NS_GET_IID(Interface1), NS_INTERFACE_OFFSET(Class, Interface1)}, \
                                         {&NS_GET_IID(Interface2), NS_INTERFACE_OFFSET(Class, Interface2)}, \
                                         {&NS_GET_IID(Interface3), NS_INTERFACE_OFFSET(Class, Interface3)}, \
                                         {&NS_GET_IID(nsISupports), NS_INTERFACE_OFFSET(Class, Interface1)}, \
                                         {nullptr, 0}};                                      \
    return NS_TableDrivenQI(this, table, iid, result);                                      \
  }

// AddRef/Release with atomic counts; at zero the count is set to 1 (so the destructor may
// take and drop references) and the object is destroyed by the given statement.
#define NC_IMPL_ISUPPORTS1_DESTROYING(Class, Interface, destroy)   \
  NC_IMPL_QUERY_INTERFACE1(Class, Interface)                        \
  NC_IMPL_ADDREF_RELEASE(Class, destroy)

#define NC_IMPL_ADDREF_RELEASE(Class, destroy)                      \
  NS_IMETHODIMP_(nsrefcnt) Class::AddRef() { return mRefCnt.increment(); } \
  NS_IMETHODIMP_(nsrefcnt) Class::Release() {                       \
    return mRefCnt.release([this] { destroy; });                    \
  }

// Internal objects go back to the module allocator.
#define NC_IMPL_POOLED_ISUPPORTS1(Class, Interface) \
  NC_IMPL_ISUPPORTS1_DESTROYING(Class, Interface, (this->~Class(), ncModuleAllocator::deallocate(this)))

#define NC_IMPL_POOLED_ISUPPORTS2(Class, Interface1, Interface2) \
  NC_IMPL_QUERY_INTERFACE2(Class, Interface1, Interface2)         \
  NC_IMPL_ADDREF_RELEASE(Class, (this->~Class(), ncModuleAllocator::deallocate(this)))

#define NC_IMPL_POOLED_ISUPPORTS3(Class, Interface1, Interface2, Interface3) \
  NC_IMPL_QUERY_INTERFACE3(Class, Interface1, Interface2, Interface3)         \
  NC_IMPL_ADDREF_RELEASE(Class, (this->~Class(), ncModuleAllocator::deallocate(this)))

// The creatable components live on the ordinary heap.
#define NC_IMPL_HEAP_ISUPPORTS1(Class, Interface) NC_IMPL_ISUPPORTS1_DESTROYING(Class, Interface, delete this)
