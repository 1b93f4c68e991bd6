// The list of blocks an interrupted upload still owes: expanding, counting, closing the
// open range and removing blocks one by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "TestSupport.h"
#include "dataapi/ncJson.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncRelayMgr.h"

namespace {

class BlockListTest : public ::testing::Test {
 protected:
  std::set<int32_t> Parse(const String& list, int32_t maxNum) {
    std::set<int32_t> blocks = {-1};  // cleared by the call
    EXPECT_TRUE(relay->ParseUnuploadBlocks(list, maxNum, blocks));
    return blocks;
  }
  uint32_t Count(const String& list) {
    uint32_t num = 0;
    EXPECT_TRUE(relay->GetUnuploadNum(list, num));
    return num;
  }
  String Delete(String list, int32_t blockId) {
    EXPECT_TRUE(relay->DeleteFormUnupload(list, blockId));
    return list;
  }

  // The codec works on text only: no database is opened.
  nsCOMPtr<ncRelayMgr> relay{NC_NEW(ncRelayMgr)};
};

TEST_F(BlockListTest, ExpandsAndCountsOnlyClosedRanges) {
  EXPECT_EQ((std::set<int32_t>{1, 2, 3, 4, 7}), Parse(u"[\"1-4\", \"7\"]", 10));
  EXPECT_EQ((std::set<int32_t>{1, 2, 3}), Parse(u"[\"1-4\", \"7\"]", 3));
  EXPECT_EQ((std::set<int32_t>{}), Parse(u"[\"1-4\"]", 0));
  EXPECT_EQ(5u, Count(u"[\"1-4\",\"7\"]"));
  // A range whose ends are equal or reversed, and an open range, hold no block yet.
  for (const char16_t* none : {u"[\"5-5\"]", u"[\"3-\"]", u"[\"9-2\"]", u"[]"}) {
    EXPECT_TRUE(Parse(none, 100).empty()) << base::ToUtf8(none);
    EXPECT_EQ(0u, Count(none)) << base::ToUtf8(none);
  }
  // Order and repeats do not matter to the readers; a range at the top of the number space ends.
  EXPECT_EQ((std::set<int32_t>{2, 3, 8}), Parse(u" [ \"8\", \"2-3\", \"3\" ] ", 10));
  EXPECT_EQ((std::set<int32_t>{2147483646, 2147483647}), Parse(u"[\"2147483646-2147483647\"]", 10));
  // The count is added to the caller's number; an empty text is no list at all.
  uint32_t num = 10;
  EXPECT_TRUE(relay->GetUnuploadNum(u"[\"1-2\"]", num));
  EXPECT_EQ(12u, num);
  EXPECT_FALSE(relay->GetUnuploadNum(u"", num));
  EXPECT_EQ(12u, num);
}

TEST_F(BlockListTest, DeletingSplitsTheRangeThatHoldsTheBlock) {
  EXPECT_EQ(u"[\"2-4\"]", Delete(u"[\"1-4\"]", 1));
  EXPECT_EQ(u"[\"1\",\"3-4\"]", Delete(u"[\"1-4\"]", 2));
  EXPECT_EQ(u"[\"1-2\",\"4\"]", Delete(u"[\"1-4\"]", 3));
  EXPECT_EQ(u"[\"1-3\"]", Delete(u"[\"1-4\"]", 4));
  EXPECT_EQ(u"[\"1-4\",\"6-10\"]", Delete(u"[\"1-10\"]", 5));
  EXPECT_EQ(u"[]", Delete(u"[\"3\"]", 3));
  // Only the first element that holds the block changes; a missing block changes nothing.
  EXPECT_EQ(u"[\"1-4\",\"7\"]", Delete(u"[\"1-4\", \"7\"]", 6));
  EXPECT_EQ(u"[\"3\"]", Delete(u"[\"3\",\"3\"]", 3));
  EXPECT_EQ(u"[\"9\",\"1-3\"]", Delete(u"[\"9\",\"1-3\"]", 5));
  String empty;
  EXPECT_FALSE(relay->DeleteFormUnupload(empty, 1));
  EXPECT_EQ(u"", empty);
}

TEST_F(BlockListTest, ClosingTheOpenRangeOnceTheLastBlockIsKnown) {
  struct Case {
    const char16_t* before;
    int32_t maxId;
    bool result;
    const char16_t* after;
  } const cases[] = {
      {u"", 1, true, u"[\"1\"]"},
      {u"", 9, true, u"[\"1-9\"]"},
      {u"", 0, false, u""},
      {u"[\"3-\"]", 9, true, u"[\"3-9\"]"},
      {u"[\"3-\"]", 3, true, u"[\"3\"]"},
      {u"[\"3-\"]", 2, false, u"[\"3-\"]"},
      {u"[\"1-3\",\"5-9\"]", 9, false, u"[\"1-3\",\"5-9\"]"},  // not exactly one element
      {u"[]", 9, false, u"[]"},
      {u"[\"3-5\"]", 9, false, u"[\"3-5\"]"},  // already closed
      {u"[\"3\"]", 9, false, u"[\"3\"]"},
      {u"[\"\"]", 9, false, u"[\"\"]"},
  };
  for (const Case& c : cases) {
    String list = c.before;
    EXPECT_EQ(c.result, relay->UpdateUnuploadWithMaxId(c.maxId, list)) << base::ToUtf8(c.before) << " " << c.maxId;
    EXPECT_EQ(String(c.after), list) << base::ToUtf8(c.before) << " " << c.maxId;
  }
}

// An upload resumed block by block in any order: after every block the list names exactly
// the blocks still owed.
TEST_F(BlockListTest, ResumingInAnyOrderEndsWithAnEmptyList) {
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    const int32_t last = 1 + static_cast<int32_t>(random() % 40);
    String list;
    ASSERT_TRUE(relay->UpdateUnuploadWithMaxId(last, list));
    std::vector<int32_t> order;
    for (int32_t block = 1; block <= last; ++block) order.push_back(block);
    std::shuffle(order.begin(), order.end(), random);
    std::set<int32_t> owed(order.begin(), order.end());
    for (int32_t block : order) {
      list = Delete(list, block);
      owed.erase(block);
      ASSERT_EQ(owed, Parse(list, INT32_MAX)) << base::ToUtf8(list);
      ASSERT_EQ(owed.size(), Count(list)) << base::ToUtf8(list);
    }
    EXPECT_EQ(u"[]", list);
  }
}

// Text that is not a list of strings reaches the caller as the reader's exception.
TEST_F(BlockListTest, MalformedListsRaiseTheReadersErrors) {
  std::set<int32_t> blocks;
  uint32_t num = 0;
  String list = u"[1, 2]";
  EXPECT_THROW_CODE_MESSAGE(
      relay->ParseUnuploadBlocks(list, 10, blocks), JSON::TypeError,
      u"Assert false : Type error: except(String), actual(Integer) [JSON::ValueT<char>::as_string ()]");
  EXPECT_THROW_CODE(relay->GetUnuploadNum(list, num), JSON::TypeError);
  EXPECT_THROW_CODE(relay->DeleteFormUnupload(list, 1), JSON::TypeError);
  EXPECT_EQ(u"[1, 2]", list);
  String object = u"{\"a\":\"1\"}";
  EXPECT_THROW_CODE(relay->UpdateUnuploadWithMaxId(3, object), JSON::TypeError);
  String truncated = u"[\"1-4\",\"7";
  EXPECT_THROW_CODE(relay->DeleteFormUnupload(truncated, 7), JSON::ParseError);
  EXPECT_THROW_CODE(relay->ParseUnuploadBlocks(u"", 10, blocks), JSON::ParseError);
}

}  // namespace
