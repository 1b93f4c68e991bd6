// The component module seen from a host: one export, registration, creation by contract id
// and class id, and the constructor's failure statuses with the pool left as it was.
#include "TestSupport.h"
#include "base/ncModulePool.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncIDocMgr.h"
#include "docmgr/ncIPathMgr.h"
#include "docmgr/ncIUpgradeMgr.h"
#include "docmgr/nsHostLoader.h"

extern "C" nsresult NSGetModule(nsIComponentManager*, nsIFile*, nsIModule**);

namespace {

const nsCID kDocMgrCid = NC_DOCMGR_CID;

TEST(ModuleTest, ExportsOnlyNSGetModule) {
  EXPECT_EQ("NSGetModule\n", test::ExportedFunctions(DOCMGR_MODULE_PATH));
}

TEST(ModuleTest, HostLearnsBothComponentsFromTheModuleFile) {
  nsHostLoader host;
  ASSERT_EQ(NS_OK, host.loadModule(DOCMGR_MODULE_PATH)) << host.lastError();
  ASSERT_EQ(2u, host.registrations().size());  // the C host (HostAbiTest.c) checks what they say
  // Each component by its contract id and by its class id, asked for its own interface.
  const nsIID* interfaces[] = {&NS_GET_IID(ncIUpgradeMgr), &NS_GET_IID(ncIDocMgr)};
  for (size_t i = 0; i < 2; ++i) {
    const nsHostLoader::Registration registration = host.registrations()[i];
    void *byContract = nullptr, *byClass = nullptr;
    ASSERT_EQ(NS_OK, host.createInstanceByContractID(registration.contractId.c_str(), nullptr, *interfaces[i], &byContract));
    ASSERT_EQ(NS_OK, host.createInstance(registration.cid, nullptr, *interfaces[i], &byClass));
    EXPECT_NE(byContract, byClass);
    for (void* object : {byContract, byClass}) static_cast<nsISupports*>(object)->Release();
  }
  nsCOMPtr<ncIUpgradeMgr> upgrade = host.create<ncIUpgradeMgr>(NC_UPGRADEMGR_CONTRACTID);
  EXPECT_FALSE(do_QueryInterface<ncIDocMgr>(upgrade.get()));
}

TEST(ModuleTest, ConstructorRefusesAggregationAndUnknownInterfacesAndRestartsKeepTheAllocator) {
  nsHostLoader host;
  ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "in-process"));
  base::ncModulePool* pool = base::ncModulePool::getInstance();
  const size_t before = pool->liveObjects();

  nsCOMPtr<ncIDocMgr> outer = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
  ASSERT_TRUE(outer);
  void* result = reinterpret_cast<void*>(0x1);
  EXPECT_EQ(NS_ERROR_NO_AGGREGATION, host.createInstance(kDocMgrCid, outer.get(), NS_GET_IID(nsISupports), &result));
  EXPECT_EQ(nullptr, result);
  result = reinterpret_cast<void*>(0x1);
  EXPECT_EQ(NS_ERROR_NO_INTERFACE, host.createInstance(kDocMgrCid, nullptr, NS_GET_IID(ncIPathMgr), &result));
  EXPECT_EQ(nullptr, result);
  outer.reset();
  EXPECT_EQ(before, pool->liveObjects());

  // A second start and a second init keep the allocator.
  base::ncIAllocator* allocator = ncDocMgrLibrary::getAllocator();
  ASSERT_NE(nullptr, allocator);
  EXPECT_STREQ("docMgrAlloc", allocator->getName());
  nsHostLoader second;
  ASSERT_EQ(NS_OK, second.addModule(NSGetModule, "second"));
  ncDocMgrLibrary library;
  library.onInitLibrary(base::AppSettings::getCFLAppSettings(), base::AppContext::getInstance());
  EXPECT_EQ(allocator, ncDocMgrLibrary::getAllocator());
}

}  // namespace
