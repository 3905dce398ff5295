// CKelTree<T>: a tree whose every node is itself a tree. A node holds one
// payload, a link to its parent, its position in the parent's child list and
// the list of its own children, which it owns: children are made with new
// and destroyed with their parent. Payloads are copied member-wise, so a
// copy shares whatever a payload points at.
//
// Copying and destroying walk the tree through its own parent links instead
// of recursing, so neither the number of siblings nor the depth of a tree
// uses stack.
#ifndef SRC_CONTAINERS_KEL_TREE_H_
#define SRC_CONTAINERS_KEL_TREE_H_

#include <new>

#include <host/kel.h>

#include "containers/kel_list.h"

template <class T>
class CKelTree {
 public:
  typedef CKelList<CKelTree*> ChildList;

  CKelTree() : m_Data(), m_pPos(nullptr), m_pParent(nullptr), m_Children(0) {}

  // Deep copy: the payload and every descendant of src. If a copy fails
  // half-way, what was copied is destroyed again before the error leaves.
  CKelTree(const CKelTree& src)
      : m_Data(src.m_Data), m_pPos(nullptr), m_pParent(nullptr), m_Children(0) {
    const CKelTree* pFirst = src.GetFirstChild();
    if (pFirst == nullptr) return;
    try {
      CopyAsFirstChild(*pFirst);
    } catch (...) {
      DeleteChildren();
      throw;
    }
  }

  // One-node copy: the payload only; the int only selects this form.
  CKelTree(const CKelTree& src, int)
      : m_Data(src.m_Data), m_pPos(nullptr), m_pParent(nullptr), m_Children(0) {}

  // A node still attached to a parent must be detached before it is
  // destroyed; the parent's list is not told.
  ~CKelTree() { DeleteChildren(); }

  CKelTree& operator=(const CKelTree&) = delete;

  // Destroys every descendant, children in list order and each subtree
  // before its root (the order a recursive destruction would take), popping
  // each node off its parent's list as it goes.
  void DeleteChildren() noexcept {
    CKelTree* pNode = this;
    for (;;) {
      _KELPOS* pHead = pNode->m_Children.HeadPos();
      if (pHead != nullptr) {
        CKelTree* pChild = pNode->m_Children.GetAtPos(pHead);
        if (pChild != nullptr) {
          pNode = pChild;
        } else {
          pNode->m_Children.DelNode(pHead, 0);
        }
        continue;
      }
      if (pNode == this) return;
      CKelTree* pParent = pNode->m_pParent;
      _KELPOS* pPos = pNode->m_pPos;
      pParent->m_Children.DelNode(pPos, 0);
      delete pNode;
      pNode = pParent;
    }
  }

  // A new default node as the last child.
  CKelTree& NewAsLastChild() {
    CKelTree* pNode = new (std::nothrow) CKelTree();
    if (pNode == nullptr) throw CKelException(-10, "CKelTree::NewAsLastChild");
    try {
      _KELPOS* pPos = m_Children.NewTail();
      _Link(*pNode, pPos, this);
    } catch (...) {
      delete pNode;
      throw;
    }
    return *pNode;
  }

  void AddAsFirstChild(CKelTree& node) {
    if (node.m_pParent != nullptr) throw CKelException(-23, "CKelTree::AddAsFirstChild");
    _Link(node, m_Children.NewHead(), this);
  }

  // Links node as the next sibling of this node.
  void AddAfter(CKelTree& node) {
    if (node.m_pParent != nullptr) throw CKelException(-23, "CKelTree::AddAfter");
    if (m_pParent == nullptr) throw CKelException(-22, "CKelTree::AddAfter");
    _Link(node, m_pParent->m_Children.NewAfter(m_pPos), m_pParent);
  }

  // Copies src, every later sibling of src and all their subtrees, in order,
  // in front of this node's existing children. On failure the copies made so
  // far stay in place, each complete up to the point of failure.
  void CopyAsFirstChild(const CKelTree& src) { _CopyChain(src, true); }

  // Copies src, every later sibling of src and all their subtrees, in order,
  // as the siblings directly after this node. Failure as CopyAsFirstChild.
  void CopyAfter(const CKelTree& src) { _CopyChain(src, false); }

  // A deep copy of this node and its subtree, attached nowhere; the caller
  // owns it.
  CKelTree* Clone() const {
    CKelTree* pClone = new (std::nothrow) CKelTree(*this);
    if (pClone == nullptr) throw CKelException(-10, "CKelTree::Clone");
    return pClone;
  }

  // Unlinks this node from its parent; it and its subtree now belong to the
  // caller.
  void Detach() {
    if (m_pParent == nullptr) throw CKelException(-22, "CKelTree::Detach");
    _KELPOS* pPos = m_pPos;
    m_pParent->m_Children.DelNode(pPos, 0);
    m_pParent = nullptr;
    m_pPos = nullptr;
  }

  CKelTree* GetFirstChild() const {
    _KELPOS* pHead = m_Children.HeadPos();
    return pHead != nullptr ? m_Children.GetAtPos(pHead) : nullptr;
  }

  CKelTree* GetNextSibling() const {
    if (m_pParent == nullptr) return nullptr;
    _KELPOS* pPos = m_pPos;
    if (m_pParent->m_Children.MoveNext(pPos) == nullptr) return nullptr;
    return m_pParent->m_Children.GetAtPos(pPos);
  }

  CKelTree* GetParent() const { return m_pParent; }
  _KELPOS* GetPos() const { return m_pPos; }
  const ChildList& GetChildren() const { return m_Children; }

  T m_Data;

 private:
  static void _Link(CKelTree& node, _KELPOS* pPos, CKelTree* pParent) {
    pParent->m_Children.GetAtPos(pPos) = &node;
    node.m_pPos = pPos;
    node.m_pParent = pParent;
  }

  // One-node copy of src linked in as this node's first child or next
  // sibling. The copy is freed again if it cannot be linked.
  CKelTree& _CopyOne(const CKelTree& src, bool bAsFirstChild) {
    CKelTree* pCopy = new (std::nothrow) CKelTree(src, 0);
    if (pCopy == nullptr) {
      throw CKelException(-10, bAsFirstChild ? "CKelTree::CopyAsFirstChild"
                                             : "CKelTree::CopyAfter");
    }
    try {
      if (bAsFirstChild) {
        AddAsFirstChild(*pCopy);
      } else {
        AddAfter(*pCopy);
      }
    } catch (...) {
      delete pCopy;
      throw;
    }
    return *pCopy;
  }

  // The copy order is the pre-order of the source: each node, then its
  // children (the first one as first child of the copy, the others each
  // after the previous copy), then its next sibling after its copy. The
  // source is walked through its parent links and the copies through
  // theirs, so the walk needs no memory of its own.
  void _CopyChain(const CKelTree& src, bool bAsFirstChild) {
    const CKelTree* pSrc = &src;
    CKelTree* pCopy = &_CopyOne(src, bAsFirstChild);
    unsigned long nDepth = 0;
    for (;;) {
      if (const CKelTree* pChild = pSrc->GetFirstChild()) {
        pCopy = &pCopy->_CopyOne(*pChild, true);
        pSrc = pChild;
        ++nDepth;
        continue;
      }
      for (;;) {
        if (const CKelTree* pNext = pSrc->GetNextSibling()) {
          pCopy = &pCopy->_CopyOne(*pNext, false);
          pSrc = pNext;
          break;
        }
        if (nDepth == 0) return;
        pSrc = pSrc->m_pParent;
        pCopy = pCopy->m_pParent;
        --nDepth;
      }
    }
  }

  _KELPOS* m_pPos;
  CKelTree* m_pParent;
  ChildList m_Children;
};

#endif  // SRC_CONTAINERS_KEL_TREE_H_
