// The component module seen from a host: one export, registration, creation by contract id
// and class id, the constructor's failure statuses, and the pool left empty afterwards.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "TestSupport.h"
#include "base/ncModulePool.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/public/ncIDocMgr.h"
#include "docmgr/public/ncIPathMgr.h"
#include "docmgr/public/ncIUpgradeMgr.h"
#include "xpcom/nsHostLoader.h"

extern "C" nsresult NSGetModule(nsIComponentManager*, nsIFile*, nsIModule**);

namespace {

const nsCID kDocMgrCid = NC_DOCMGR_CID;
const nsCID kUpgradeMgrCid = NC_UPGRADEMGR_CID;

TEST(ModuleTest, ExportsOnlyNSGetModule) {
  int status = 0;
  const std::string symbols = test::RunCommand(std::string("nm -D --defined-only ") + DOCMGR_MODULE_PATH, &status);
  ASSERT_EQ(0, status) << symbols;
  ASSERT_FALSE(symbols.empty());
  size_t functions = 0;
  for (size_t start = 0; start < symbols.size();) {
    const size_t end = symbols.find('\n', start);
    const std::string line = symbols.substr(start, end - start);
    start = end == std::string::npos ? symbols.size() : end + 1;
    if (line.find(" T ") == std::string::npos && line.find(" W ") == std::string::npos) continue;
    ++functions;
    EXPECT_NE(std::string::npos, line.find("NSGetModule")) << line;
  }
  EXPECT_EQ(1u, functions);
}

TEST(ModuleTest, HostLearnsBothComponentsFromTheModuleFile) {
  nsHostLoader host;
  ASSERT_EQ(NS_OK, host.loadModule(DOCMGR_MODULE_PATH)) << host.lastError();
  ASSERT_EQ(2u, host.registrations().size());
  EXPECT_EQ("ncUpgradeMgr", host.registrations()[0].className);
  EXPECT_EQ(NC_UPGRADEMGR_CONTRACTID, host.registrations()[0].contractId);
  EXPECT_EQ("ncDocMgr", host.registrations()[1].className);
  EXPECT_EQ(kDocMgrCid, host.registrations()[1].cid);

  // Each component by its contract id and by its class id, asked for its own interface.
  const nsIID* interfaces[] = {&NS_GET_IID(ncIUpgradeMgr), &NS_GET_IID(ncIDocMgr)};
  for (size_t i = 0; i < 2; ++i) {
    const nsHostLoader::Registration& registration = host.registrations()[i];
    void* byContract = nullptr;
    void* byClass = nullptr;
    ASSERT_EQ(NS_OK, host.createInstanceByContractID(registration.contractId.c_str(), nullptr, *interfaces[i],
                                                     &byContract));
    ASSERT_EQ(NS_OK, host.createInstance(registration.cid, nullptr, *interfaces[i], &byClass));
    EXPECT_NE(byContract, byClass);
    nsCOMPtr<nsISupports> first = nsCOMPtr<nsISupports>::adopt(static_cast<nsISupports*>(byContract));
    nsCOMPtr<nsISupports> second = nsCOMPtr<nsISupports>::adopt(static_cast<nsISupports*>(byClass));
    EXPECT_TRUE(do_QueryInterface<nsISupports>(first.get()));
  }
  nsCOMPtr<ncIUpgradeMgr> upgrade = host.create<ncIUpgradeMgr>(NC_UPGRADEMGR_CONTRACTID);
  EXPECT_FALSE(do_QueryInterface<ncIDocMgr>(upgrade.get()));
}

TEST(ModuleTest, ConstructorRefusesAggregationAndUnknownInterfaces) {
  nsHostLoader host;
  ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "in-process"));
  base::ncModulePool* pool = base::ncModulePool::getInstance();
  ASSERT_NE(nullptr, pool);
  const size_t before = pool->liveObjects();

  nsCOMPtr<ncIDocMgr> outer = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
  ASSERT_TRUE(outer);
  for (const nsCID& cid : {kDocMgrCid, kUpgradeMgrCid}) {
    void* result = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(NS_ERROR_NO_AGGREGATION, host.createInstance(cid, outer.get(), NS_GET_IID(nsISupports), &result));
    EXPECT_EQ(nullptr, result);
  }
  void* result = reinterpret_cast<void*>(0x1);
  EXPECT_EQ(NS_ERROR_NO_INTERFACE, host.createInstance(kDocMgrCid, nullptr, NS_GET_IID(ncIPathMgr), &result));
  EXPECT_EQ(nullptr, result);
  outer.reset();
  EXPECT_EQ(before, pool->liveObjects());
}

TEST(ModuleTest, ReleasingEverythingLeavesNoLiveObjects) {
  test::TempDir dir;
  base::ncModulePool* pool = base::ncModulePool::getInstance();
  const size_t before = pool->liveObjects();
  {
    nsHostLoader host;
    ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "in-process"));
    nsCOMPtr<ncIDocMgr> docMgr = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
    docMgr->Init(dir.wpath(), dir.wpath(), {}, false, u"tester");
    docMgr->AddLocalSync(dir.child("local"));
    nsCOMPtr<ncIPathMgr> pathMgr = nsCOMPtr<ncIPathMgr>::adopt(docMgr->GetPathMgr(u""));
    EXPECT_GT(pool->liveObjects("ncPathMgr"), 0u);
    const size_t storeWrappers = pool->liveObjects("ncDBMgr");  // one per open store
    docMgr->CreateDBMgr();
    EXPECT_EQ(storeWrappers + 1, pool->liveObjects("ncDBMgr"));
    docMgr->Close();
  }
  EXPECT_EQ(before, pool->liveObjects()) << "live: " << pool->liveObjects();
}

TEST(ModuleTest, SecondStartAndSecondInitKeepTheAllocator) {
  nsHostLoader host;
  ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "first"));
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
