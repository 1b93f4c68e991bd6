// The slot of every interface operation as a host built to the published tables counts it:
// three nsISupports slots, then each operation in table order, no destructor anywhere in an
// interface. Under the Itanium C++ ABI a pointer to a virtual member function holds
// 1 + the byte offset of its vtable entry, which gives the slot without calling anything.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "docmgr/ncIADSMgr.h"
#include "docmgr/ncICacheMgr.h"
#include "docmgr/ncIDBMgr.h"
#include "docmgr/ncIDocMgr.h"
#include "docmgr/ncIFileMgr.h"
#include "docmgr/ncILogMgr.h"
#include "docmgr/ncIMsgMgr.h"
#include "docmgr/ncIPathMgr.h"
#include "docmgr/ncIRelayMgr.h"
#include "docmgr/ncIUpgradeMgr.h"
#include "docmgr/ncIVerUpgrader.h"
#include "docmgr/nsIComponentRegistrar.h"
#include "docmgr/nsIFactory.h"
#include "docmgr/nsIModule.h"

namespace {

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
                                        ncIVerUpgrader>(),
              "an interface destructor would take a slot a host calls");

TEST(InterfaceLayoutTest, FrozenComponentModelInterfaces) {
  EXPECT_EQ(0u, SlotOf(&nsISupports::QueryInterface));
  EXPECT_EQ(2u, SlotOf(&nsISupports::Release));
  EXPECT_EQ(3u, SlotOf(&nsIFactory::CreateInstance));
  EXPECT_EQ(4u, SlotOf(&nsIFactory::LockFactory));
  EXPECT_EQ(3u, SlotOf(&nsIModule::GetClassObject));
  EXPECT_EQ(4u, SlotOf(&nsIModule::RegisterSelf));
  EXPECT_EQ(6u, SlotOf(&nsIModule::CanUnload));
  EXPECT_EQ(3u, SlotOf(&nsIComponentManager::GetClassObject));
  EXPECT_EQ(6u, SlotOf(&nsIComponentManager::CreateInstanceByContractID));
  EXPECT_EQ(3u, SlotOf(&nsIComponentRegistrar::AutoRegister));
  EXPECT_EQ(7u, SlotOf(&nsIComponentRegistrar::RegisterFactoryLocation));
  EXPECT_EQ(14u, SlotOf(&nsIComponentRegistrar::ContractIDToCID));
  EXPECT_EQ(4u, sizeof(PRBool));
}

// The first and last operation of each manager interface, numbered as its table numbers
// them (the tables that count from 1 start after the three nsISupports slots).
TEST(InterfaceLayoutTest, ManagerInterfacesFollowTheirTables) {
  const size_t base = 3;
  EXPECT_EQ(base + 0, SlotOf(&ncIDocMgr::Init));
  EXPECT_EQ(base + 8, SlotOf(&ncIDocMgr::GetUnsyncDoc));
  EXPECT_EQ(base + 10, SlotOf(&ncIDocMgr::GetUnsyncLogNum));
  EXPECT_EQ(base + 11, SlotOf(&ncIDocMgr::GetPathMgr));
  EXPECT_EQ(base + 18, SlotOf(&ncIDocMgr::CreateDBMgr));
  EXPECT_EQ(base + 0, SlotOf(&ncIDBMgr::Open));
  EXPECT_EQ(base + 7, SlotOf(&ncIDBMgr::RollbackTransaction));
  EXPECT_EQ(base + 0, SlotOf(&ncIPathMgr::GetRootPath));
  EXPECT_EQ(base + 8, SlotOf(&ncIPathMgr::GetRelativePath));
  EXPECT_EQ(base + 9, SlotOf(&ncIPathMgr::IsTempPath));
  EXPECT_EQ(base + 25, SlotOf(&ncIPathMgr::GetGuidTempPathName));
  EXPECT_EQ(base + 0, SlotOf(&ncICacheMgr::Update));
  EXPECT_EQ(base + 20, SlotOf(&ncICacheMgr::Search));
  EXPECT_EQ(base + 28, SlotOf(&ncICacheMgr::GetCacheSubInfos));
  EXPECT_EQ(base + 0, SlotOf(&ncIADSMgr::SetDelayInfo));
  EXPECT_EQ(base + 13, SlotOf(&ncIADSMgr::CheckErrMarkInfo));
  EXPECT_EQ(base + 18, SlotOf(&ncIADSMgr::DeleteStatusInfo));
  EXPECT_EQ(base + 0, SlotOf(&ncIFileMgr::MoveNoADS));
  EXPECT_EQ(base + 10, SlotOf(&ncIFileMgr::CustomizeVrFolder));
  EXPECT_EQ(base + 0, SlotOf(&ncILogMgr::RecordSyncLog));
  EXPECT_EQ(base + 5, SlotOf(&ncILogMgr::GetSyncLogById));
  EXPECT_EQ(base + 0, SlotOf(&ncIMsgMgr::RecordMsg));
  EXPECT_EQ(base + 6, SlotOf(&ncIMsgMgr::UpdateAndFilterMsg));
  // These two tables number the nsISupports slots 0 to 2 themselves.
  EXPECT_EQ(3u, SlotOf(&ncIRelayMgr::UpdateUploadNonius));
  EXPECT_EQ(12u, SlotOf(&ncIRelayMgr::ParseUnuploadBlocks));
  EXPECT_EQ(22u, SlotOf(&ncIRelayMgr::DeleteDownloadNonius));
  EXPECT_EQ(3u, SlotOf(&ncIUpgradeMgr::Init));
  EXPECT_EQ(10u, SlotOf(&ncIUpgradeMgr::GetSummary));
  EXPECT_EQ(3u, SlotOf(&ncIVerUpgrader::Upgrade));
}

}  // namespace
