#include "containers/kel_list.h"

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <random>
#include <string>
#include <vector>

#include "alloc_hooks.h"
#include "kel_test_util.h"

namespace {

using kel_test::ListIsConsistent;
using kel_test::LiveTrackedBlocks;
using IntList = CKelList<int>;
using IntNode = CKelListNode<int>;

std::vector<int> Values(IntList& list) {
  std::vector<int> out;
  for (_KELPOS* pos = list.HeadPos(); pos != nullptr;) out.push_back(list.GetNext(pos));
  return out;
}

std::vector<int> ValuesBackwards(const IntList& list) {
  std::vector<int> out;
  for (const IntNode* n = list.TailPos() ? IntNode::FromPos(list.TailPos()) : nullptr; n != nullptr;
       n = n->Prev())
    out.push_back(n->m_Data);
  return out;
}

void Fill(IntList& list, const std::vector<int>& values) {
  for (int v : values) list.GetAtPos(list.NewTail()) = v;
}

// Position of the i-th node (0-based).
_KELPOS* PosAt(IntList& list, int i) {
  _KELPOS* pos = list.HeadPos();
  while (i-- > 0) list.MoveNext(pos);
  return pos;
}

TEST(KelList, NewListIsEmptyWithoutLock) {
  const long before = LiveTrackedBlocks();
  IntList list(0);
  EXPECT_EQ(list.HeadPos(), nullptr);
  EXPECT_EQ(list.TailPos(), nullptr);
  EXPECT_EQ(list.GetCount(), 0);
  EXPECT_FALSE(list.IsThreadSafe());
  EXPECT_EQ(LiveTrackedBlocks(), before);
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, ThreadSafeListOwnsALockThatDiesWithIt) {
  const long before = LiveTrackedBlocks();
  {
    IntList list(1);
    EXPECT_TRUE(list.IsThreadSafe());
    EXPECT_EQ(LiveTrackedBlocks(), before + 1);
    Fill(list, {1, 2});
    EXPECT_EQ(Values(list), (std::vector<int>{1, 2}));
  }
  EXPECT_EQ(LiveTrackedBlocks(), before);
}

TEST(KelList, AnyNonZeroArgumentMakesTheListThreadSafe) {
  IntList list(-7);
  EXPECT_TRUE(list.IsThreadSafe());
}

TEST(KelList, LockAllocationFailureThrowsMinus10FromConstructor) {
  const long before = LiveTrackedBlocks();
  {
    kel_test::FailureScope fail(1);
    EXPECT_KEL_THROW(IntList list(1), -10, "CKelList<>::CKelList");
  }
  EXPECT_EQ(LiveTrackedBlocks(), before);
}

TEST(KelList, NewTailOnEmptyListMakesHeadAndTail) {
  IntList list(0);
  _KELPOS* pos = list.NewTail();
  ASSERT_NE(pos, nullptr);
  EXPECT_EQ(list.HeadPos(), pos);
  EXPECT_EQ(list.TailPos(), pos);
  EXPECT_EQ(list.GetCount(), 1);
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, NewHeadOnEmptyListMakesHeadAndTail) {
  IntList list(0);
  _KELPOS* pos = list.NewHead();
  EXPECT_EQ(list.HeadPos(), pos);
  EXPECT_EQ(list.TailPos(), pos);
  EXPECT_EQ(list.GetCount(), 1);
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, NewTailAppendsInOrder) {
  IntList list(0);
  Fill(list, {1, 2, 3});
  EXPECT_EQ(Values(list), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(ValuesBackwards(list), (std::vector<int>{3, 2, 1}));
  EXPECT_EQ(list.GetCount(), 3);
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, NewHeadPrependsAndReturnsTheNewHead) {
  IntList list(0);
  Fill(list, {2, 3});
  _KELPOS* old_tail = list.TailPos();
  _KELPOS* pos = list.NewHead();
  list.GetAtPos(pos) = 1;
  EXPECT_EQ(list.HeadPos(), pos);
  EXPECT_EQ(list.TailPos(), old_tail);
  EXPECT_EQ(Values(list), (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, NewAfterOnTailMakesTheNewNodeTheTail) {
  IntList list(0);
  Fill(list, {1, 2});
  _KELPOS* pos = list.NewAfter(list.TailPos());
  list.GetAtPos(pos) = 3;
  EXPECT_EQ(list.TailPos(), pos);
  EXPECT_EQ(list.GetCount(), 3);
  EXPECT_EQ(Values(list), (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, NewAfterOnInnerNodeLeavesTheTail) {
  IntList list(0);
  Fill(list, {1, 3});
  _KELPOS* tail = list.TailPos();
  _KELPOS* pos = list.NewAfter(list.HeadPos());
  list.GetAtPos(pos) = 2;
  EXPECT_EQ(list.TailPos(), tail);
  EXPECT_NE(pos, tail);
  EXPECT_EQ(Values(list), (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, NewNodesAreHandedOutAsDistinctPositions) {
  IntList list(0);
  _KELPOS* a = list.NewTail();
  _KELPOS* b = list.NewHead();
  _KELPOS* c = list.NewAfter(b);
  EXPECT_NE(a, b);
  EXPECT_NE(b, c);
  EXPECT_NE(a, c);
}

TEST(KelList, PositionIsTheAddressOfTheStoredValue) {
  IntList list(0);
  _KELPOS* pos = list.NewTail();
  EXPECT_EQ(static_cast<void*>(&list.GetAtPos(pos)), static_cast<void*>(pos));
}

TEST(KelList, GetAtPosGivesAWritableReference) {
  IntList list(0);
  _KELPOS* pos = list.NewTail();
  list.GetAtPos(pos) = 41;
  ++list.GetAtPos(pos);
  const IntList& view = list;
  EXPECT_EQ(view.GetAtPos(pos), 42);
}

TEST(KelList, GetNextWalksTheListAndEndsWithNullPosition) {
  IntList list(0);
  Fill(list, {5, 6, 7});
  _KELPOS* pos = list.HeadPos();
  EXPECT_EQ(list.GetNext(pos), 5);
  EXPECT_EQ(pos, PosAt(list, 1));
  EXPECT_EQ(list.GetNext(pos), 6);
  EXPECT_EQ(list.GetNext(pos), 7);
  EXPECT_EQ(pos, nullptr);
}

TEST(KelList, GetNextOnLastPositionReturnsItsValueAndLeavesPosNull) {
  IntList list(0);
  Fill(list, {1, 2});
  _KELPOS* pos = list.TailPos();
  EXPECT_EQ(list.GetNext(pos), 2);
  EXPECT_EQ(pos, nullptr);
  EXPECT_KEL_THROW(list.GetNext(pos), -8, "CKelList<>::GetNext");
  EXPECT_EQ(pos, nullptr);
}

TEST(KelList, MoveNextReturnsAndStoresTheNextPosition) {
  IntList list(0);
  Fill(list, {1, 2});
  _KELPOS* pos = list.HeadPos();
  _KELPOS* next = list.MoveNext(pos);
  EXPECT_EQ(next, list.TailPos());
  EXPECT_EQ(pos, next);
  EXPECT_EQ(list.MoveNext(pos), nullptr);
  EXPECT_EQ(pos, nullptr);
  EXPECT_KEL_THROW(list.MoveNext(pos), -8, "CKelList<>::MoveNext");
}

TEST(KelList, CheckValidPosCodes) {
  IntList list(0);
  IntList other(0);
  Fill(list, {1});
  Fill(other, {1});
  EXPECT_EQ(list._CheckValidPos(list.HeadPos()), 0);
  EXPECT_EQ(list._CheckValidPos(nullptr), -8);
  EXPECT_EQ(list._CheckValidPos(other.HeadPos()), -9);
}

// Every operation that takes a position, with a NULL position (-8) and with a
// position of another list (-9): the call throws its own name and neither
// list nor position changes.
struct PosOp {
  const char* func;
  std::function<void(IntList&, _KELPOS*&)> call;
};

std::vector<PosOp> PosOps() {
  return {
      {"CKelList<>::GetAtPos", [](IntList& l, _KELPOS*& p) { l.GetAtPos(p); }},
      {"CKelList<>::GetAtPos", [](IntList& l, _KELPOS*& p) { static_cast<const IntList&>(l).GetAtPos(p); }},
      {"CKelList<>::GetNext", [](IntList& l, _KELPOS*& p) { l.GetNext(p); }},
      {"CKelList<>::MoveNext", [](IntList& l, _KELPOS*& p) { l.MoveNext(p); }},
      {"CKelList<>::NewAfter", [](IntList& l, _KELPOS*& p) { l.NewAfter(p); }},
      {"CKelList<>::DelNode", [](IntList& l, _KELPOS*& p) { l.DelNode(p, 0); }},
      {"CKelList<>::DelNode", [](IntList& l, _KELPOS*& p) { l.DelNode(p, 1); }},
  };
}

TEST(KelList, NullPositionThrowsMinus8AndChangesNothing) {
  for (const PosOp& op : PosOps()) {
    SCOPED_TRACE(op.func);
    IntList list(0);
    Fill(list, {1, 2, 3});
    const long before = LiveTrackedBlocks();
    _KELPOS* pos = nullptr;
    EXPECT_KEL_THROW(op.call(list, pos), -8, op.func);
    EXPECT_EQ(pos, nullptr);
    EXPECT_EQ(Values(list), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(LiveTrackedBlocks(), before);
    EXPECT_TRUE(ListIsConsistent(list));
  }
}

TEST(KelList, PositionFromAnotherListThrowsMinus9AndChangesNothing) {
  for (const PosOp& op : PosOps()) {
    SCOPED_TRACE(op.func);
    IntList list(0);
    IntList other(0);
    Fill(list, {1, 2, 3});
    Fill(other, {7, 8});
    const long before = LiveTrackedBlocks();
    _KELPOS* foreign = other.HeadPos();
    _KELPOS* pos = foreign;
    EXPECT_KEL_THROW(op.call(list, pos), -9, op.func);
    EXPECT_EQ(pos, foreign);
    EXPECT_EQ(Values(list), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Values(other), (std::vector<int>{7, 8}));
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_EQ(other.GetCount(), 2);
    EXPECT_EQ(LiveTrackedBlocks(), before);
    EXPECT_TRUE(ListIsConsistent(list));
    EXPECT_TRUE(ListIsConsistent(other));
  }
}

TEST(KelList, DelNodeOfTheOnlyNodeLeavesHeadTailPositionNullAndCountZero) {
  for (int backwards : {0, 1}) {
    SCOPED_TRACE(backwards);
    IntList list(0);
    const long before = LiveTrackedBlocks();
    _KELPOS* pos = list.NewTail();
    list.DelNode(pos, backwards);
    EXPECT_EQ(pos, nullptr);
    EXPECT_EQ(list.HeadPos(), nullptr);
    EXPECT_EQ(list.TailPos(), nullptr);
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(LiveTrackedBlocks(), before);
    EXPECT_TRUE(ListIsConsistent(list));
  }
}

TEST(KelList, DelNodeBackwardsOnTheHeadLeavesThePositionNull) {
  IntList list(0);
  Fill(list, {1, 2, 3});
  _KELPOS* second = PosAt(list, 1);
  _KELPOS* pos = list.HeadPos();
  list.DelNode(pos, 1);
  EXPECT_EQ(pos, nullptr);
  EXPECT_EQ(list.HeadPos(), second);
  EXPECT_EQ(Values(list), (std::vector<int>{2, 3}));
  EXPECT_TRUE(ListIsConsistent(list));
}

TEST(KelList, DelNodeForwardOnTheTailLeavesThePositionNullAndMovesTheTail) {
  IntList list(0);
  Fill(list, {1, 2, 3});
  _KELPOS* second = PosAt(list, 1);
  _KELPOS* pos = list.TailPos();
  list.DelNode(pos, 0);
  EXPECT_EQ(pos, nullptr);
  EXPECT_EQ(list.TailPos(), second);
  EXPECT_EQ(Values(list), (std::vector<int>{1, 2}));
  EXPECT_TRUE(ListIsConsistent(list));
}

// Where the position lands after deleting the node at `index` of {1,2,3,4}.
struct DelCase {
  int index;
  int backwards;
  int landed_on;  // value at the resulting position, 0 for NULL
  std::vector<int> left;
};

TEST(KelList, DelNodeMovesThePositionToTheRequestedNeighbour) {
  const std::vector<DelCase> cases = {
      {0, 0, 2, {2, 3, 4}}, {0, 1, 0, {2, 3, 4}}, {1, 0, 3, {1, 3, 4}}, {1, 1, 1, {1, 3, 4}},
      {2, 0, 4, {1, 2, 4}}, {2, 1, 2, {1, 2, 4}}, {3, 0, 0, {1, 2, 3}}, {3, 1, 3, {1, 2, 3}},
  };
  for (const DelCase& c : cases) {
    SCOPED_TRACE(::testing::Message() << "index " << c.index << " backwards " << c.backwards);
    IntList list(0);
    Fill(list, {1, 2, 3, 4});
    _KELPOS* pos = PosAt(list, c.index);
    list.DelNode(pos, c.backwards);
    if (c.landed_on == 0) {
      EXPECT_EQ(pos, nullptr);
    } else {
      ASSERT_NE(pos, nullptr);
      EXPECT_EQ(list.GetAtPos(pos), c.landed_on);
    }
    EXPECT_EQ(Values(list), c.left);
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_TRUE(ListIsConsistent(list));
  }
}

TEST(KelList, EmptyOnAnEmptyListIsHarmless) {
  IntList list(0);
  list.Empty();
  list.Empty();
  EXPECT_EQ(list.HeadPos(), nullptr);
  EXPECT_EQ(list.TailPos(), nullptr);
  EXPECT_EQ(list.GetCount(), 0);
}

TEST(KelList, EmptyFreesEveryNodeAndNullsHeadAndTail) {
  IntList list(0);
  const long before = LiveTrackedBlocks();
  Fill(list, {1, 2, 3, 4, 5});
  EXPECT_EQ(LiveTrackedBlocks(), before + 5);
  list.Empty();
  EXPECT_EQ(LiveTrackedBlocks(), before);
  EXPECT_EQ(list.HeadPos(), nullptr);
  EXPECT_EQ(list.TailPos(), nullptr);
  EXPECT_EQ(list.GetCount(), 0);
  Fill(list, {9});
  EXPECT_EQ(Values(list), (std::vector<int>{9}));
}

TEST(KelList, DestructorFreesEveryNode) {
  const long before = LiveTrackedBlocks();
  {
    IntList list(0);
    Fill(list, {1, 2, 3});
  }
  EXPECT_EQ(LiveTrackedBlocks(), before);
}

TEST(KelList, StoresPointersWithoutOwningThem) {
  int a = 1;
  int b = 2;
  {
    CKelList<int*> list(0);
    list.GetAtPos(list.NewTail()) = &a;
    list.GetAtPos(list.NewTail()) = &b;
    *list.GetAtPos(list.HeadPos()) = 10;
  }
  EXPECT_EQ(a, 10);
  EXPECT_EQ(b, 2);
}

TEST(KelListNode, NewNodeBelongsToItsOwnerAndHasNoNeighbours) {
  IntList list(0);
  IntList other(0);
  IntNode node(&list);
  EXPECT_TRUE(node.IsFirst());
  EXPECT_TRUE(node.IsLast());
  EXPECT_EQ(node.Next(), nullptr);
  EXPECT_EQ(node.Prev(), nullptr);
  EXPECT_TRUE(node.InList(&list));
  EXPECT_FALSE(node.InList(&other));
}

TEST(KelListNode, NewAfterLinksBetweenThisAndItsOldNext) {
  IntList list(0);
  IntNode first(&list);
  IntNode* last = first.NewAfter();
  IntNode* middle = first.NewAfter();
  EXPECT_EQ(first.Next(), middle);
  EXPECT_EQ(middle->Prev(), &first);
  EXPECT_EQ(middle->Next(), last);
  EXPECT_EQ(last->Prev(), middle);
  EXPECT_TRUE(middle->InList(&list));
  EXPECT_TRUE(last->IsLast());
  EXPECT_EQ(list.GetCount(), 0);
  EXPECT_EQ(list.HeadPos(), nullptr);
  delete middle;
  delete last;
}

TEST(KelListNode, NewBeforeLinksBetweenThisAndItsOldPrev) {
  IntList list(0);
  IntNode last(&list);
  IntNode* first = last.NewBefore();
  IntNode* middle = last.NewBefore();
  EXPECT_EQ(first->Next(), middle);
  EXPECT_EQ(middle->Prev(), first);
  EXPECT_EQ(middle->Next(), &last);
  EXPECT_EQ(last.Prev(), middle);
  EXPECT_TRUE(first->IsFirst());
  EXPECT_TRUE(middle->InList(&list));
  delete middle;
  delete first;
}

TEST(KelListNode, DestructorClosesTheGapWithoutTouchingTheList) {
  IntList list(0);
  IntNode first(&list);
  IntNode* middle = first.NewAfter();
  IntNode* last = middle->NewAfter();
  delete middle;
  EXPECT_EQ(first.Next(), last);
  EXPECT_EQ(last->Prev(), &first);
  EXPECT_EQ(list.GetCount(), 0);
  EXPECT_EQ(list.HeadPos(), nullptr);
  EXPECT_EQ(list.TailPos(), nullptr);
  delete last;
  EXPECT_TRUE(first.IsLast());
}

TEST(KelListNode, AllocationFailureThrowsMinus10AndKeepsTheLinks) {
  IntList list(0);
  IntNode first(&list);
  IntNode* last = first.NewAfter();
  const long before = LiveTrackedBlocks();
  {
    kel_test::FailureScope fail(1);
    EXPECT_KEL_THROW(first.NewAfter(), -10, "CKelListNode<>::NewAfter");
  }
  {
    kel_test::FailureScope fail(1);
    EXPECT_KEL_THROW(last->NewBefore(), -10, "CKelListNode<>::NewBefore");
  }
  EXPECT_EQ(first.Next(), last);
  EXPECT_EQ(last->Prev(), &first);
  EXPECT_TRUE(first.IsFirst());
  EXPECT_TRUE(last->IsLast());
  EXPECT_EQ(LiveTrackedBlocks(), before);
  delete last;
}

// A long random run of every operation against std::list, checking all
// invariants after each step.
TEST(KelList, RandomOperationsMatchAReferenceListAndKeepInvariants) {
  std::mt19937 rng(20261122);
  IntList list(0);
  std::list<int> model;
  int next_value = 1;
  for (int step = 0; step < 4000; ++step) {
    const int size = static_cast<int>(model.size());
    const int index = size > 0 ? static_cast<int>(rng() % static_cast<unsigned>(size)) : 0;
    const unsigned op = rng() % 5;
    if (op == 0) {
      list.GetAtPos(list.NewHead()) = next_value;
      model.push_front(next_value++);
    } else if (op == 1) {
      list.GetAtPos(list.NewTail()) = next_value;
      model.push_back(next_value++);
    } else if (op == 2 && size > 0) {
      list.GetAtPos(list.NewAfter(PosAt(list, index))) = next_value;
      model.insert(std::next(model.begin(), index + 1), next_value++);
    } else if (op == 3 && size > 0) {
      _KELPOS* pos = PosAt(list, index);
      const int backwards = static_cast<int>(rng() % 2);
      list.DelNode(pos, backwards);
      auto it = model.erase(std::next(model.begin(), index));
      if (backwards != 0) {
        if (index == 0) {
          EXPECT_EQ(pos, nullptr);
        } else {
          ASSERT_NE(pos, nullptr);
          EXPECT_EQ(list.GetAtPos(pos), *std::prev(it));
        }
      } else if (it == model.end()) {
        EXPECT_EQ(pos, nullptr);
      } else {
        ASSERT_NE(pos, nullptr);
        EXPECT_EQ(list.GetAtPos(pos), *it);
      }
    } else if (op == 4 && rng() % 50 == 0) {
      list.Empty();
      model.clear();
    }
    ASSERT_TRUE(ListIsConsistent(list)) << "step " << step;
    ASSERT_EQ(Values(list), std::vector<int>(model.begin(), model.end())) << "step " << step;
  }
}

}  // namespace
