// The block-list codec of the resume records on arbitrary texts: the four operations either
// work or raise the JSON reader's errors, and what they write is a list they read again.
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

#include "FuzzInput.h"
#include "dataapi/ncJson.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncRelayMgr.h"
#include "docmgr/nsCOMPtr.h"

namespace {

// Expanding a list is bounded by maxNum; a larger bound only costs the fuzzer memory.
const int32_t kMaxBlocks = 1 << 12;

const std::initializer_list<int> kReaderErrors = {JSON::TypeError, JSON::ParseError, JSON::DecodeError};

size_t Elements(const base::String& list) { return JSON::Value::parse(base::ToUtf8(list)).as_array().size(); }

void CheckDelete(ncRelayMgr& relay, const base::String& list, int32_t blockId) {
  base::String rewritten = list;
  if (!relay.DeleteFormUnupload(rewritten, blockId)) {
    FUZZ_CHECK(list.empty() && rewritten.empty());
    return;
  }
  // At most the one element holding the block is split in two; the result reads again.
  FUZZ_CHECK(Elements(rewritten) <= Elements(list) + 1);
  std::set<int32_t> blocks;
  relay.ParseUnuploadBlocks(rewritten, kMaxBlocks, blocks);
}

void CheckClose(ncRelayMgr& relay, const base::String& list, int32_t maxId) {
  base::String closed = list;
  if (!relay.UpdateUnuploadWithMaxId(maxId, closed)) {
    FUZZ_CHECK(closed == list);
    return;
  }
  // One element that ends at maxId: "start-maxId", or "maxId" alone.
  const JSON::Value written = JSON::Value::parse(base::ToUtf8(closed));
  FUZZ_CHECK(written.size() == 1);
  const std::string& element = written[size_t{0}].as_string();
  const std::string last = std::to_string(maxId);
  FUZZ_CHECK(element.size() >= last.size() && element.compare(element.size() - last.size(), last.size(), last) == 0);
  uint32_t num = 0;
  FUZZ_CHECK(relay.GetUnuploadNum(closed, num));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  const int32_t number = input.int32();
  const int32_t maxNum = number % kMaxBlocks;
  const base::String list = base::FromUtf8(input.rest());

  nsCOMPtr<ncRelayMgr> relay(NC_NEW(ncRelayMgr));
  fuzz::ExpectOnlyCodes(
      [&] {
        std::set<int32_t> blocks = {42};
        relay->ParseUnuploadBlocks(list, maxNum, blocks);
        FUZZ_CHECK(static_cast<int64_t>(blocks.size()) <= (maxNum > 0 ? maxNum : 0));
      },
      kReaderErrors);
  fuzz::ExpectOnlyCodes(
      [&] {
        uint32_t num = 7;
        FUZZ_CHECK(relay->GetUnuploadNum(list, num) == !list.empty());
      },
      kReaderErrors);
  fuzz::ExpectOnlyCodes([&] { CheckDelete(*relay, list, number); }, kReaderErrors);
  fuzz::ExpectOnlyCodes([&] { CheckClose(*relay, list, number); }, kReaderErrors);
  return 0;
}
