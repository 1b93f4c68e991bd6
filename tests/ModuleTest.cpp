// The component module seen from a host: one export, registration, creation by contract id
// and class id, the constructor's failure statuses with the pool left as it was, and the
// slot of every interface operation as a host built to the published tables counts it (three
// nsISupports slots, then each operation in table order, no destructor anywhere in an
// interface). Under the Itanium C++ ABI a pointer to a virtual member function holds 1 + the
// byte offset of its vtable entry, which gives the slot without calling anything.
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "TestSupport.h"
#include "base/ncModulePool.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncIADSMgr.h"
#include "docmgr/ncICacheBulkWriter.h"
#include "docmgr/ncICacheMgr.h"
#include "docmgr/ncIDBMgr.h"
#include "docmgr/ncIDocMgr.h"
#include "docmgr/ncIFileMgr.h"
#include "docmgr/ncILogBulkWriter.h"
#include "docmgr/ncILogMgr.h"
#include "docmgr/ncIMsgMgr.h"
#include "docmgr/ncIPathMgr.h"
#include "docmgr/ncIRelayMgr.h"
#include "docmgr/ncIStoreBatch.h"
#include "docmgr/ncIUpgradeMgr.h"
#include "docmgr/ncIVerUpgrader.h"
#include "docmgr/nsHostLoader.h"
#include "docmgr/nsIComponentRegistrar.h"
#include "docmgr/nsIFactory.h"
#include "docmgr/nsIModule.h"

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
  nsHostLoader second;
  ASSERT_EQ(NS_OK, second.addModule(NSGetModule, "second"));
  ncDocMgrLibrary library;
  library.onInitLibrary(base::AppSettings::getCFLAppSettings(), base::AppContext::getInstance());
  EXPECT_EQ(allocator, ncDocMgrLibrary::getAllocator());
}

template <typename Member>
size_t SlotOf(Member member) {
  struct {
    uintptr_t pointer;
    ptrdiff_t adjustment;
  } raw;
  static_assert(sizeof raw == sizeof member, "Itanium member-function pointers only");
  std::memcpy(&raw, &member, sizeof raw);
  EXPECT_EQ(1u, raw.pointer % sizeof(void*)) << "not a virtual function";
  return (raw.pointer - 1) / sizeof(void*);
}

template <typename... Interface>
constexpr bool NoneHasAVirtualDestructor() {
  return (!std::has_virtual_destructor<Interface>::value && ...);
}

static_assert(NoneHasAVirtualDestructor<nsISupports, nsIFactory, nsIModule, nsIComponentManager,
                                        nsIComponentRegistrar, ncIDocMgr, ncIDBMgr, ncIPathMgr, ncICacheMgr,
                                        ncIADSMgr, ncIFileMgr, ncILogMgr, ncIMsgMgr, ncIRelayMgr, ncIUpgradeMgr,
                                        ncIVerUpgrader, ncIStoreBatch, ncICacheBulkWriter, ncILogBulkWriter>(),
              "an interface destructor would take a slot a host calls");

#define SLOT(operation, expected) \
  { #operation, SlotOf(&operation), expected }

// Each manager's operations numbered as its table numbers them: the tables that count from
// 1 start after the three nsISupports slots (base), those of ncIRelayMgr, ncIUpgradeMgr and
// ncIVerUpgrader number the nsISupports slots themselves. The C host (HostAbiTest.c) calls
// nsIModule, nsIFactory and the registrar through vtables of its own.
TEST(ModuleTest, InterfaceOperationsSitAtTheSlotsTheirTablesGiveThem) {
  const size_t base = 3;
  const struct { const char* operation; size_t slot, expected; } slots[] = {
      SLOT(nsIComponentManager::GetClassObject, 3),   SLOT(nsIComponentManager::CreateInstanceByContractID, 6),
      SLOT(nsIComponentRegistrar::AutoRegister, 3),   SLOT(nsIComponentRegistrar::ContractIDToCID, 14),
      SLOT(ncIDocMgr::Init, base + 0),                SLOT(ncIDocMgr::GetUnsyncDoc, base + 8),
      SLOT(ncIDocMgr::GetUnsyncLogNum, base + 10),    SLOT(ncIDocMgr::GetPathMgr, base + 11),
      SLOT(ncIDocMgr::CreateDBMgr, base + 18),        SLOT(ncIDBMgr::Open, base + 0),
      SLOT(ncIDBMgr::RollbackTransaction, base + 7),  SLOT(ncIPathMgr::GetRootPath, base + 0),
      SLOT(ncIPathMgr::GetRelativePath, base + 8),    SLOT(ncIPathMgr::IsTempPath, base + 9),
      SLOT(ncIPathMgr::GetGuidTempPathName, base + 25), SLOT(ncICacheMgr::Update, base + 0),
      SLOT(ncICacheMgr::Search, base + 20),           SLOT(ncICacheMgr::GetCacheSubInfos, base + 28),
      SLOT(ncIADSMgr::SetDelayInfo, base + 0),        SLOT(ncIADSMgr::CheckErrMarkInfo, base + 13),
      SLOT(ncIADSMgr::DeleteStatusInfo, base + 18),   SLOT(ncIFileMgr::MoveNoADS, base + 0),
      SLOT(ncIFileMgr::CustomizeVrFolder, base + 10), SLOT(ncILogMgr::RecordSyncLog, base + 0),
      SLOT(ncILogMgr::GetSyncLogById, base + 5),      SLOT(ncIMsgMgr::RecordMsg, base + 0),
      SLOT(ncIMsgMgr::UpdateAndFilterMsg, base + 6),  SLOT(ncIRelayMgr::UpdateUploadNonius, 3),
      SLOT(ncIRelayMgr::ParseUnuploadBlocks, 12),     SLOT(ncIRelayMgr::DeleteDownloadNonius, 22),
      SLOT(ncIUpgradeMgr::Init, 3),                   SLOT(ncIUpgradeMgr::GetSummary, 10),
      SLOT(ncIVerUpgrader::Upgrade, 3),               SLOT(ncIStoreBatch::RollbackBatch, base + 2),
      SLOT(ncICacheBulkWriter::UpdateBulk, base + 0), SLOT(ncILogBulkWriter::RecordSyncLogBulk, base + 0),
  };
  for (const auto& entry : slots) EXPECT_EQ(entry.expected, entry.slot) << entry.operation;
}

}  // namespace
