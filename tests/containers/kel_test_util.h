// Shared helpers of the container tests: exception expectations, a payload
// that counts its instances, and structural checks of lists and trees.
#ifndef TESTS_CONTAINERS_KEL_TEST_UTIL_H_
#define TESTS_CONTAINERS_KEL_TEST_UTIL_H_

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "containers/kel_list.h"
#include "containers/kel_tree.h"

// Expects stmt to throw a CKelException with the given code and function
// text, and nothing else.
#define EXPECT_KEL_THROW(stmt, rc, func)                                   \
  do {                                                                     \
    try {                                                                  \
      stmt;                                                                \
      ADD_FAILURE() << "no exception from: " #stmt;                        \
    } catch (const CKelException& kel_exception) {                         \
      EXPECT_EQ(kel_exception.GetRC(), (rc)) << #stmt;                     \
      EXPECT_STREQ(kel_exception.GetFunc(), (func)) << #stmt;              \
    }                                                                      \
  } while (0)

namespace kel_test {

// Tree payload: an id, a shared destruction tally indexed by id and a shared
// log of destruction order (copies share both, as member-wise copies do).
// Live instances are counted.
struct Payload {
  int id = -1;
  std::vector<int>* destroyed = nullptr;
  std::vector<int>* order = nullptr;

  Payload() { ++live; }
  Payload(const Payload& other) : id(other.id), destroyed(other.destroyed), order(other.order) { ++live; }
  Payload& operator=(const Payload&) = default;
  ~Payload() {
    --live;
    if (destroyed != nullptr && id >= 0) ++(*destroyed)[static_cast<std::size_t>(id)];
    if (order != nullptr) order->push_back(id);
  }

  static inline long live = 0;
};

using Tree = CKelTree<Payload>;

// Every invariant of a list: head/tail agree with the links, links are
// mutual, every node belongs to the list, and the count is the node count.
template <class T>
::testing::AssertionResult ListIsConsistent(const CKelList<T>& list) {
  using Node = CKelListNode<T>;
  const _KELPOS* head = list.HeadPos();
  const _KELPOS* tail = list.TailPos();
  if ((head == nullptr) != (tail == nullptr))
    return ::testing::AssertionFailure() << "head and tail disagree on emptiness";
  int count = 0;
  const Node* prev = nullptr;
  for (const Node* node = head != nullptr ? Node::FromPos(head) : nullptr; node != nullptr;
       node = node->Next()) {
    if (!node->InList(&list)) return ::testing::AssertionFailure() << "foreign node at " << count;
    if (node->Prev() != prev) return ::testing::AssertionFailure() << "prev link broken at " << count;
    if (node->IsFirst() != (prev == nullptr))
      return ::testing::AssertionFailure() << "IsFirst wrong at " << count;
    prev = node;
    ++count;
  }
  if (prev != (tail != nullptr ? Node::FromPos(tail) : nullptr))
    return ::testing::AssertionFailure() << "tail is not the last node";
  if (prev != nullptr && !prev->IsLast()) return ::testing::AssertionFailure() << "tail has a next";
  if (count != list.GetCount())
    return ::testing::AssertionFailure() << "count " << list.GetCount() << " but " << count << " nodes";
  return ::testing::AssertionSuccess();
}

// Every invariant of a tree below root: each child list is consistent, holds
// no NULL entry, and each child names this node as parent and the entry's
// position as its own. Walks with an explicit stack.
inline ::testing::AssertionResult TreeIsConsistent(const Tree& root) {
  std::vector<const Tree*> stack{&root};
  while (!stack.empty()) {
    const Tree* node = stack.back();
    stack.pop_back();
    const auto& children = node->GetChildren();
    auto list_ok = ListIsConsistent(children);
    if (!list_ok) return list_ok;
    for (_KELPOS* pos = children.HeadPos(); pos != nullptr;
         pos = CKelListNode<Tree*>::FromPos(pos)->Next()) {
      const Tree* child = children.GetAtPos(pos);
      if (child == nullptr) return ::testing::AssertionFailure() << "NULL child entry";
      if (child->GetParent() != node) return ::testing::AssertionFailure() << "child's parent wrong";
      if (child->GetPos() != pos) return ::testing::AssertionFailure() << "child's position wrong";
      stack.push_back(child);
    }
  }
  return ::testing::AssertionSuccess();
}

// Pre-order (depth, id) of root's subtree, root included, walked with the
// tree's own navigation.
inline std::vector<std::pair<int, int>> Shape(const Tree& root) {
  std::vector<std::pair<int, int>> out;
  std::vector<std::pair<const Tree*, int>> stack{{&root, 0}};
  while (!stack.empty()) {
    auto [node, depth] = stack.back();
    stack.pop_back();
    out.emplace_back(depth, node->m_Data.id);
    std::vector<const Tree*> kids;
    for (const Tree* c = node->GetFirstChild(); c != nullptr; c = c->GetNextSibling()) kids.push_back(c);
    for (auto it = kids.rbegin(); it != kids.rend(); ++it) stack.emplace_back(*it, depth + 1);
  }
  return out;
}

// Pre-order (depth, id) of src and every later sibling of src with their
// subtrees, src's depth counted as 0: exactly what a chain copy reproduces.
inline std::vector<std::pair<int, int>> ChainShape(const Tree& src) {
  std::vector<std::pair<int, int>> out;
  for (const Tree* node = &src; node != nullptr; node = node->GetNextSibling()) {
    for (const auto& [depth, id] : Shape(*node)) out.emplace_back(depth, id);
  }
  return out;
}

// The child with the given id, searched among root's descendants.
inline Tree* Find(Tree& root, int id) {
  std::vector<Tree*> stack{&root};
  while (!stack.empty()) {
    Tree* node = stack.back();
    stack.pop_back();
    if (node->m_Data.id == id) return node;
    for (Tree* c = node->GetFirstChild(); c != nullptr; c = c->GetNextSibling()) stack.push_back(c);
  }
  return nullptr;
}

// Ids of the direct children, in order.
inline std::vector<int> ChildIds(const Tree& node) {
  std::vector<int> ids;
  for (const Tree* c = node.GetFirstChild(); c != nullptr; c = c->GetNextSibling()) ids.push_back(c->m_Data.id);
  return ids;
}

// Appends a child with the given id.
inline Tree& AddChild(Tree& parent, int id) {
  Tree& child = parent.NewAsLastChild();
  child.m_Data.id = id;
  return child;
}

// root(0) { 1 { 2 { 3, 4 }, 5 }, 6, 7 { 8 } }: three levels below the root,
// several siblings at each level.
inline void BuildSample(Tree& root, std::vector<int>* tally = nullptr, std::vector<int>* order = nullptr) {
  root.m_Data.id = 0;
  root.m_Data.destroyed = tally;
  root.m_Data.order = order;
  auto add = [tally, order](Tree& parent, int id) -> Tree& {
    Tree& child = AddChild(parent, id);
    child.m_Data.destroyed = tally;
    child.m_Data.order = order;
    return child;
  };
  Tree& n1 = add(root, 1);
  Tree& n2 = add(n1, 2);
  add(n2, 3);
  add(n2, 4);
  add(n1, 5);
  add(root, 6);
  Tree& n7 = add(root, 7);
  add(n7, 8);
}

}  // namespace kel_test

#endif  // TESTS_CONTAINERS_KEL_TEST_UTIL_H_
