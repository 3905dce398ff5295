#include "containers/kel_tree.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "alloc_hooks.h"
#include "kel_test_util.h"

namespace {

using kel_test::AddChild;
using kel_test::BuildSample;
using kel_test::ChainShape;
using kel_test::ChildIds;
using kel_test::Find;
using kel_test::LiveTrackedBlocks;
using kel_test::Payload;
using kel_test::Shape;
using kel_test::Tree;
using kel_test::TreeIsConsistent;
using ShapeList = std::vector<std::pair<int, int>>;

// A heap node with the given id, not attached anywhere.
std::unique_ptr<Tree> Loose(int id) {
  auto node = std::make_unique<Tree>();
  node->m_Data.id = id;
  return node;
}

// Leak accounting around one test body: tracked blocks and payloads.
class TreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    blocks_ = LiveTrackedBlocks();
    payloads_ = Payload::live;
  }
  void TearDown() override {
    EXPECT_EQ(LiveTrackedBlocks(), blocks_) << "container blocks leaked";
    EXPECT_EQ(Payload::live, payloads_) << "payloads leaked";
  }

 private:
  long blocks_ = 0;
  long payloads_ = 0;
};

TEST_F(TreeTest, DefaultNodeIsADetachedLeafWithADefaultPayload) {
  Tree node;
  EXPECT_EQ(node.GetParent(), nullptr);
  EXPECT_EQ(node.GetPos(), nullptr);
  EXPECT_EQ(node.GetFirstChild(), nullptr);
  EXPECT_EQ(node.GetNextSibling(), nullptr);
  EXPECT_EQ(node.GetChildren().GetCount(), 0);
  EXPECT_EQ(node.m_Data.id, -1);
}

TEST_F(TreeTest, NewAsLastChildAppendsADefaultNodeAtTheTailPosition) {
  Tree root;
  Tree& a = root.NewAsLastChild();
  Tree& b = root.NewAsLastChild();
  EXPECT_EQ(a.m_Data.id, -1);
  EXPECT_EQ(a.GetParent(), &root);
  EXPECT_EQ(b.GetParent(), &root);
  EXPECT_EQ(b.GetPos(), root.GetChildren().TailPos());
  EXPECT_EQ(a.GetPos(), root.GetChildren().HeadPos());
  EXPECT_EQ(root.GetFirstChild(), &a);
  EXPECT_EQ(a.GetNextSibling(), &b);
  EXPECT_EQ(root.GetChildren().GetCount(), 2);
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, GetNextSiblingOfARootIsNull) {
  Tree root;
  BuildSample(root);
  EXPECT_EQ(root.GetNextSibling(), nullptr);
}

TEST_F(TreeTest, GetNextSiblingOfTheLastChildIsNull) {
  Tree root;
  BuildSample(root);
  EXPECT_EQ(Find(root, 7)->GetNextSibling(), nullptr);
  EXPECT_EQ(Find(root, 4)->GetNextSibling(), nullptr);
}

TEST_F(TreeTest, GetFirstChildOfALeafIsNull) {
  Tree root;
  BuildSample(root);
  EXPECT_EQ(Find(root, 3)->GetFirstChild(), nullptr);
  EXPECT_EQ(Find(root, 6)->GetFirstChild(), nullptr);
}

TEST_F(TreeTest, FirstChildAndNextSiblingWalkEveryLevelInOrder) {
  Tree root;
  BuildSample(root);
  EXPECT_EQ(ChildIds(root), (std::vector<int>{1, 6, 7}));
  EXPECT_EQ(ChildIds(*Find(root, 1)), (std::vector<int>{2, 5}));
  EXPECT_EQ(ChildIds(*Find(root, 2)), (std::vector<int>{3, 4}));
  EXPECT_EQ(Shape(root), (ShapeList{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {3, 4}, {2, 5}, {1, 6}, {1, 7}, {2, 8}}));
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, DetachOfARootThrowsMinus22) {
  Tree root;
  BuildSample(root);
  EXPECT_KEL_THROW(root.Detach(), -22, "CKelTree::Detach");
  EXPECT_EQ(root.GetParent(), nullptr);
  EXPECT_EQ(root.GetChildren().GetCount(), 3);
}

TEST_F(TreeTest, DetachClearsParentAndPositionAndTheParentNoLongerListsIt) {
  Tree root;
  BuildSample(root);
  Tree* n1 = Find(root, 1);
  const ShapeList subtree = Shape(*n1);
  n1->Detach();
  std::unique_ptr<Tree> owned(n1);
  EXPECT_EQ(n1->GetParent(), nullptr);
  EXPECT_EQ(n1->GetPos(), nullptr);
  EXPECT_EQ(n1->GetNextSibling(), nullptr);
  EXPECT_EQ(ChildIds(root), (std::vector<int>{6, 7}));
  EXPECT_EQ(root.GetChildren().GetCount(), 2);
  EXPECT_EQ(Shape(*n1), subtree);
  EXPECT_TRUE(TreeIsConsistent(root));
  EXPECT_TRUE(TreeIsConsistent(*n1));
}

TEST_F(TreeTest, DetachOfMiddleAndLastChildKeepsTheOthersInOrder) {
  Tree root;
  BuildSample(root);
  Tree* n6 = Find(root, 6);
  n6->Detach();
  delete n6;
  Tree* n7 = Find(root, 7);
  n7->Detach();
  delete n7;
  EXPECT_EQ(ChildIds(root), (std::vector<int>{1}));
  EXPECT_EQ(Find(root, 1)->GetNextSibling(), nullptr);
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, DetachedNodeCanBeLinkedAgain) {
  Tree root;
  BuildSample(root);
  Tree* n7 = Find(root, 7);
  n7->Detach();
  root.AddAsFirstChild(*n7);
  EXPECT_EQ(ChildIds(root), (std::vector<int>{7, 1, 6}));
  EXPECT_EQ(n7->GetParent(), &root);
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, AddAsFirstChildInsertsAtTheHeadPosition) {
  Tree root;
  BuildSample(root);
  Tree* node = Loose(50).release();
  root.AddAsFirstChild(*node);
  EXPECT_EQ(node->GetParent(), &root);
  EXPECT_EQ(node->GetPos(), root.GetChildren().HeadPos());
  EXPECT_EQ(ChildIds(root), (std::vector<int>{50, 1, 6, 7}));
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, AddAsFirstChildOnALeafMakesItsOnlyChild) {
  Tree root;
  Tree* node = Loose(50).release();
  root.AddAsFirstChild(*node);
  EXPECT_EQ(root.GetChildren().HeadPos(), root.GetChildren().TailPos());
  EXPECT_EQ(ChildIds(root), (std::vector<int>{50}));
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, AddAsFirstChildWithAnAttachedNodeThrowsMinus23AndChangesNothing) {
  Tree root;
  BuildSample(root);
  Tree other;
  const ShapeList before = Shape(root);
  EXPECT_KEL_THROW(other.AddAsFirstChild(*Find(root, 2)), -23, "CKelTree::AddAsFirstChild");
  EXPECT_EQ(Shape(root), before);
  EXPECT_EQ(other.GetFirstChild(), nullptr);
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, AddAfterLinksTheNodeAsTheNextSibling) {
  Tree root;
  BuildSample(root);
  Tree* n1 = Find(root, 1);
  Tree* node = Loose(50).release();
  n1->AddAfter(*node);
  EXPECT_EQ(node->GetParent(), &root);
  EXPECT_EQ(n1->GetNextSibling(), node);
  _KELPOS* expected = n1->GetPos();
  CKelList<Tree*>& children = const_cast<CKelList<Tree*>&>(root.GetChildren());
  children.MoveNext(expected);
  EXPECT_EQ(node->GetPos(), expected);
  EXPECT_EQ(ChildIds(root), (std::vector<int>{1, 50, 6, 7}));
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, AddAfterTheLastChildMakesTheNewLastChild) {
  Tree root;
  BuildSample(root);
  Tree* node = Loose(50).release();
  Find(root, 7)->AddAfter(*node);
  EXPECT_EQ(node->GetPos(), root.GetChildren().TailPos());
  EXPECT_EQ(node->GetNextSibling(), nullptr);
  EXPECT_EQ(ChildIds(root), (std::vector<int>{1, 6, 7, 50}));
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, AddAfterOnARootThrowsMinus22AndChangesNothing) {
  Tree root;
  BuildSample(root);
  auto node = Loose(50);
  const ShapeList before = Shape(root);
  EXPECT_KEL_THROW(root.AddAfter(*node), -22, "CKelTree::AddAfter");
  EXPECT_EQ(node->GetParent(), nullptr);
  EXPECT_EQ(node->GetPos(), nullptr);
  EXPECT_EQ(Shape(root), before);
}

TEST_F(TreeTest, AddAfterWithAnAttachedNodeThrowsMinus23AndChangesNothing) {
  Tree root;
  BuildSample(root);
  const ShapeList before = Shape(root);
  Tree* n3 = Find(root, 3);
  EXPECT_KEL_THROW(Find(root, 6)->AddAfter(*n3), -23, "CKelTree::AddAfter");
  EXPECT_EQ(n3->GetParent(), Find(root, 2));
  EXPECT_EQ(Shape(root), before);
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, AddAfterChecksTheAddedNodeBeforeThisNode) {
  Tree root;
  BuildSample(root);
  Tree loose_root;
  EXPECT_KEL_THROW(loose_root.AddAfter(*Find(root, 3)), -23, "CKelTree::AddAfter");
}

TEST_F(TreeTest, CloneOfANodeWithChildrenCopiesItsSubtreeButNotItsSiblings) {
  Tree root;
  BuildSample(root);
  Tree* n1 = Find(root, 1);
  std::unique_ptr<Tree> clone(n1->Clone());
  EXPECT_EQ(clone->GetParent(), nullptr);
  EXPECT_EQ(clone->GetPos(), nullptr);
  EXPECT_EQ(clone->GetNextSibling(), nullptr);
  EXPECT_EQ(Shape(*clone), Shape(*n1));
  EXPECT_EQ(Shape(*clone), (ShapeList{{0, 1}, {1, 2}, {2, 3}, {2, 4}, {1, 5}}));
  EXPECT_TRUE(TreeIsConsistent(*clone));
  EXPECT_EQ(Shape(root), (ShapeList{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {3, 4}, {2, 5}, {1, 6}, {1, 7}, {2, 8}}));
}

TEST_F(TreeTest, CloneOfALeafIsASingleDetachedNode) {
  Tree root;
  BuildSample(root);
  std::unique_ptr<Tree> clone(Find(root, 6)->Clone());
  EXPECT_EQ(Shape(*clone), (ShapeList{{0, 6}}));
  EXPECT_EQ(clone->GetParent(), nullptr);
}

TEST_F(TreeTest, CloneMadeNewNodesThatAreIndependentOfTheSource) {
  Tree root;
  BuildSample(root);
  const ShapeList before = Shape(root);
  {
    std::unique_ptr<Tree> clone(root.Clone());
    EXPECT_NE(clone->GetFirstChild(), root.GetFirstChild());
    clone->GetFirstChild()->m_Data.id = 99;
    Tree* c7 = Find(*clone, 7);
    c7->Detach();
    delete c7;
    AddChild(*clone, 42);
  }
  EXPECT_EQ(Shape(root), before);
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, PayloadsAreCopiedMemberWiseAndShareWhatTheyPointAt) {
  std::vector<int> tally(9, 0);
  {
    Tree root;
    BuildSample(root, &tally);
    std::unique_ptr<Tree> clone(root.Clone());
    EXPECT_EQ(Find(*clone, 4)->m_Data.destroyed, &tally);
  }
  for (int count : tally) EXPECT_EQ(count, 2);
}

TEST_F(TreeTest, DeepCopyConstructorCopiesTheWholeSubtreeAndIsDetached) {
  Tree root;
  BuildSample(root);
  Tree copy(*Find(root, 7));
  EXPECT_EQ(copy.GetParent(), nullptr);
  EXPECT_EQ(Shape(copy), (ShapeList{{0, 7}, {1, 8}}));
  Tree whole(root);
  EXPECT_EQ(Shape(whole), Shape(root));
  EXPECT_TRUE(TreeIsConsistent(whole));
}

TEST_F(TreeTest, OneNodeCopyHasNoChildrenWhateverTheSourceHad) {
  Tree root;
  BuildSample(root);
  const long blocks = LiveTrackedBlocks();
  Tree copy(root, 0);
  EXPECT_EQ(copy.m_Data.id, 0);
  EXPECT_EQ(copy.GetFirstChild(), nullptr);
  EXPECT_EQ(copy.GetChildren().GetCount(), 0);
  EXPECT_EQ(copy.GetParent(), nullptr);
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
  Tree leaf_copy(*Find(root, 2), 12345);
  EXPECT_EQ(leaf_copy.m_Data.id, 2);
  EXPECT_EQ(leaf_copy.GetFirstChild(), nullptr);
}

TEST_F(TreeTest, CopyAsFirstChildCopiesTheSourceAndItsLaterSiblingsBeforeExistingChildren) {
  Tree root;
  BuildSample(root);
  Tree dest;
  AddChild(dest, 100);
  dest.CopyAsFirstChild(*Find(root, 1));
  EXPECT_EQ(ChildIds(dest), (std::vector<int>{1, 6, 7, 100}));
  ShapeList expected = Shape(root);
  expected.emplace_back(1, 100);
  ShapeList got = Shape(dest);
  got[0].second = 0;
  EXPECT_EQ(got, expected);
  EXPECT_TRUE(TreeIsConsistent(dest));
}

TEST_F(TreeTest, CopyAsFirstChildFromAMiddleSiblingSkipsTheEarlierOnes) {
  Tree root;
  BuildSample(root);
  Tree dest;
  dest.CopyAsFirstChild(*Find(root, 6));
  EXPECT_EQ(ChildIds(dest), (std::vector<int>{6, 7}));
  EXPECT_EQ(ChildIds(*Find(dest, 7)), (std::vector<int>{8}));
  EXPECT_TRUE(TreeIsConsistent(dest));
}

TEST_F(TreeTest, CopyAsFirstChildOfARootCopiesOnlyItsSubtree) {
  Tree root;
  BuildSample(root);
  Tree dest;
  dest.m_Data.id = 50;
  dest.CopyAsFirstChild(root);
  ShapeList expected{{0, 50}};
  for (const auto& [depth, id] : Shape(root)) expected.emplace_back(depth + 1, id);
  EXPECT_EQ(Shape(dest), expected);
  EXPECT_TRUE(TreeIsConsistent(dest));
}

TEST_F(TreeTest, CopyAfterPutsTheCopiesDirectlyAfterThisNodeInOrder) {
  Tree root;
  BuildSample(root);
  Tree dest;
  Tree& a = AddChild(dest, 100);
  AddChild(dest, 101);
  a.CopyAfter(*Find(root, 2));
  EXPECT_EQ(ChildIds(dest), (std::vector<int>{100, 2, 5, 101}));
  EXPECT_EQ(ChildIds(*Find(dest, 2)), (std::vector<int>{3, 4}));
  EXPECT_EQ(ChainShape(*Find(dest, 2)).size(), ChainShape(*Find(root, 2)).size() + 1);
  EXPECT_TRUE(TreeIsConsistent(dest));
}

TEST_F(TreeTest, CopyAfterOnARootThrowsMinus22AndLeavesNoCopy) {
  Tree root;
  BuildSample(root);
  Tree dest;
  EXPECT_KEL_THROW(dest.CopyAfter(*Find(root, 1)), -22, "CKelTree::AddAfter");
  EXPECT_EQ(dest.GetFirstChild(), nullptr);
}

TEST_F(TreeTest, CopyIntoTheSourceTreeItselfCopiesTheChainOnce) {
  Tree root;
  BuildSample(root);
  Tree* n2 = Find(root, 2);
  n2->CopyAsFirstChild(*Find(root, 3));
  EXPECT_EQ(ChildIds(*n2), (std::vector<int>{3, 4, 3, 4}));
  Tree* n6 = Find(root, 6);
  n6->CopyAfter(*Find(root, 7));
  EXPECT_EQ(ChildIds(root), (std::vector<int>{1, 6, 7, 7}));
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, DestroyingARootWithAThreeLevelSubtreeFreesEveryNodeExactlyOnce) {
  std::vector<int> tally(9, 0);
  const long blocks = LiveTrackedBlocks();
  {
    Tree root;
    BuildSample(root, &tally);
    EXPECT_GT(LiveTrackedBlocks(), blocks);
  }
  EXPECT_EQ(tally, std::vector<int>(9, 1));
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
}

TEST_F(TreeTest, DeleteChildrenDestroysSubtreesInListOrderEachBeforeItsRoot) {
  std::vector<int> order;
  Tree root;
  BuildSample(root, nullptr, &order);
  root.DeleteChildren();
  EXPECT_EQ(order, (std::vector<int>{3, 4, 2, 5, 1, 6, 8, 7}));
  root.m_Data.order = nullptr;
}

TEST_F(TreeTest, DeleteChildrenKeepsTheNodeAndItsPayload) {
  std::vector<int> tally(9, 0);
  const long blocks = LiveTrackedBlocks();
  Tree root;
  BuildSample(root, &tally);
  root.DeleteChildren();
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
  EXPECT_EQ(tally, (std::vector<int>{0, 1, 1, 1, 1, 1, 1, 1, 1}));
  EXPECT_EQ(root.m_Data.id, 0);
  EXPECT_EQ(root.GetFirstChild(), nullptr);
  EXPECT_EQ(root.GetChildren().HeadPos(), nullptr);
  EXPECT_EQ(root.GetChildren().GetCount(), 0);
  AddChild(root, 1);
  EXPECT_EQ(ChildIds(root), (std::vector<int>{1}));
  root.m_Data.destroyed = nullptr;
  root.GetFirstChild()->m_Data.destroyed = nullptr;
}

TEST_F(TreeTest, DeleteChildrenOfAnInnerNodeLeavesTheRestOfTheTree) {
  Tree root;
  BuildSample(root);
  Find(root, 1)->DeleteChildren();
  EXPECT_EQ(Shape(root), (ShapeList{{0, 0}, {1, 1}, {1, 6}, {1, 7}, {2, 8}}));
  EXPECT_TRUE(TreeIsConsistent(root));
}

TEST_F(TreeTest, DeleteChildrenOfALeafIsHarmless) {
  Tree leaf;
  leaf.DeleteChildren();
  leaf.DeleteChildren();
  EXPECT_EQ(leaf.GetFirstChild(), nullptr);
}

// Random mix of every linking and copying operation; after each step the
// parent/position invariant holds everywhere and every payload alive belongs
// to exactly one node of the tree.
TEST_F(TreeTest, RandomOperationsKeepTheParentAndPositionInvariant) {
  std::mt19937 rng(4242);
  const long payloads_before = Payload::live;
  Tree root;
  root.m_Data.id = 0;
  int next_id = 1;
  auto all_nodes = [&root]() {
    std::vector<Tree*> nodes;
    std::vector<Tree*> stack{&root};
    while (!stack.empty()) {
      Tree* n = stack.back();
      stack.pop_back();
      nodes.push_back(n);
      for (Tree* c = n->GetFirstChild(); c != nullptr; c = c->GetNextSibling()) stack.push_back(c);
    }
    return nodes;
  };
  for (int step = 0; step < 600; ++step) {
    std::vector<Tree*> nodes = all_nodes();
    Tree* target = nodes[rng() % nodes.size()];
    Tree* other = nodes[rng() % nodes.size()];
    switch (rng() % 7) {
      case 0:
        AddChild(*target, next_id++);
        break;
      case 1: {
        Tree* node = Loose(next_id++).release();
        target->AddAsFirstChild(*node);
        break;
      }
      case 2:
        if (target != &root) {
          Tree* node = Loose(next_id++).release();
          target->AddAfter(*node);
        }
        break;
      case 3:
        if (target != &root && nodes.size() > 1) {
          target->Detach();
          delete target;
        }
        break;
      case 4:
        if (nodes.size() < 400) {
          std::unique_ptr<Tree> clone(other->Clone());
          target->AddAsFirstChild(*clone.release());
        }
        break;
      case 5:
        if (nodes.size() < 400 && other->GetFirstChild() != nullptr) {
          std::unique_ptr<Tree> clone(other->Clone());
          target->CopyAsFirstChild(*clone->GetFirstChild());
        }
        break;
      case 6:
        if (nodes.size() < 400 && target != &root && other->GetFirstChild() != nullptr) {
          std::unique_ptr<Tree> clone(other->Clone());
          target->CopyAfter(*clone->GetFirstChild());
        }
        break;
    }
    ASSERT_TRUE(TreeIsConsistent(root)) << "step " << step;
    ASSERT_EQ(static_cast<long>(all_nodes().size()), Payload::live - payloads_before) << "step " << step;
  }
}

}  // namespace
