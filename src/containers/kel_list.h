// CKelList<T>: a doubly linked list of T values handed out by position. A
// position (_KELPOS*) is the address of a node, and every operation that takes
// one first checks that the node belongs to this list, so a rejected call
// changes nothing. The list stores values only and never owns what they point
// at.
#ifndef SRC_CONTAINERS_KEL_LIST_H_
#define SRC_CONTAINERS_KEL_LIST_H_

#include <new>

#include <host/kel.h>

// Opaque position type. Every list node derives from it, and since a node
// adds its value as its first member, a position is also the address of the
// value stored there.
struct _KELPOS {};

template <class T>
class CKelList;

template <class T>
class CKelListNode : public _KELPOS {
 public:
  // The value is left as T's default-initialisation makes it: the caller
  // stores it right after creating the node.
  explicit CKelListNode(const CKelList<T>* pList)
      : m_pList(pList), m_pPrev(nullptr), m_pNext(nullptr) {}

  // Closes the gap between the neighbours; the owning list's head, tail and
  // count are the list's business.
  ~CKelListNode() {
    if (m_pPrev != nullptr) m_pPrev->m_pNext = m_pNext;
    if (m_pNext != nullptr) m_pNext->m_pPrev = m_pPrev;
  }

  CKelListNode(const CKelListNode&) = delete;
  CKelListNode& operator=(const CKelListNode&) = delete;

  CKelListNode* Next() const { return m_pNext; }
  CKelListNode* Prev() const { return m_pPrev; }
  bool IsFirst() const { return m_pPrev == nullptr; }
  bool IsLast() const { return m_pNext == nullptr; }
  bool InList(const CKelList<T>* pList) const { return m_pList == pList; }

  CKelListNode* NewAfter() {
    CKelListNode* pNode = new (std::nothrow) CKelListNode(m_pList);
    if (pNode == nullptr) throw CKelException(-10, "CKelListNode<>::NewAfter");
    pNode->m_pPrev = this;
    pNode->m_pNext = m_pNext;
    if (m_pNext != nullptr) m_pNext->m_pPrev = pNode;
    m_pNext = pNode;
    return pNode;
  }

  CKelListNode* NewBefore() {
    CKelListNode* pNode = new (std::nothrow) CKelListNode(m_pList);
    if (pNode == nullptr) throw CKelException(-10, "CKelListNode<>::NewBefore");
    pNode->m_pNext = this;
    pNode->m_pPrev = m_pPrev;
    if (m_pPrev != nullptr) m_pPrev->m_pNext = pNode;
    m_pPrev = pNode;
    return pNode;
  }

  static CKelListNode* FromPos(_KELPOS* pPos) { return static_cast<CKelListNode*>(pPos); }
  static const CKelListNode* FromPos(const _KELPOS* pPos) {
    return static_cast<const CKelListNode*>(pPos);
  }

  T m_Data;

 private:
  const CKelList<T>* const m_pList;
  CKelListNode* m_pPrev;
  CKelListNode* m_pNext;
};

template <class T>
class CKelList {
 public:
  typedef CKelListNode<T> Node;

  // A non-zero argument gives the list a host lock of its own. No operation
  // takes it: the list is not synchronised, the lock only lives and dies with
  // it.
  explicit CKelList(int bThreadSafe)
      : m_pHead(nullptr), m_pTail(nullptr), m_pLock(nullptr), m_nCount(0) {
    if (bThreadSafe == 0) return;
    m_pLock = new (std::nothrow) KEL_CRITICAL_SECTION;
    if (m_pLock == nullptr) throw CKelException(-10, "CKelList<>::CKelList");
    kelCriticalSectionInitialize(m_pLock);
  }

  ~CKelList() {
    Empty();
    if (m_pLock != nullptr) {
      kelCriticalSectionDestroy(m_pLock);
      delete m_pLock;
    }
  }

  CKelList(const CKelList&) = delete;
  CKelList& operator=(const CKelList&) = delete;

  _KELPOS* HeadPos() const { return m_pHead; }
  _KELPOS* TailPos() const { return m_pTail; }
  int GetCount() const { return m_nCount; }
  bool IsThreadSafe() const { return m_pLock != nullptr; }

  int _CheckValidPos(const _KELPOS* pPos) const {
    if (pPos == nullptr) return -8;
    if (!Node::FromPos(pPos)->InList(this)) return -9;
    return 0;
  }

  T& GetAtPos(_KELPOS* pPos) {
    _Check(pPos, "CKelList<>::GetAtPos");
    return Node::FromPos(pPos)->m_Data;
  }

  const T& GetAtPos(const _KELPOS* pPos) const {
    _Check(pPos, "CKelList<>::GetAtPos");
    return Node::FromPos(pPos)->m_Data;
  }

  // The value at pPos; pPos moves on (NULL after the last node).
  T& GetNext(_KELPOS*& pPos) {
    _Check(pPos, "CKelList<>::GetNext");
    Node* pNode = Node::FromPos(pPos);
    pPos = pNode->Next();
    return pNode->m_Data;
  }

  _KELPOS* MoveNext(_KELPOS*& pPos) {
    _Check(pPos, "CKelList<>::MoveNext");
    pPos = Node::FromPos(pPos)->Next();
    return pPos;
  }

  _KELPOS* NewHead() {
    if (m_pHead != nullptr) {
      m_pHead = m_pHead->NewBefore();
    } else {
      m_pHead = m_pTail = _NewFirst("CKelList<>::NewHead");
    }
    ++m_nCount;
    return m_pHead;
  }

  _KELPOS* NewTail() {
    if (m_pTail != nullptr) {
      m_pTail = m_pTail->NewAfter();
    } else {
      m_pHead = m_pTail = _NewFirst("CKelList<>::NewTail");
    }
    ++m_nCount;
    return m_pTail;
  }

  _KELPOS* NewAfter(_KELPOS* pPos) {
    _Check(pPos, "CKelList<>::NewAfter");
    Node* pNode = Node::FromPos(pPos)->NewAfter();
    if (pNode->IsLast()) m_pTail = pNode;
    ++m_nCount;
    return pNode;
  }

  // Removes the node at pPos; pPos moves to its predecessor when bBackwards
  // is not 0, else to its successor.
  void DelNode(_KELPOS*& pPos, int bBackwards) {
    _Check(pPos, "CKelList<>::DelNode");
    Node* pNode = Node::FromPos(pPos);
    if (pNode->IsFirst()) m_pHead = pNode->Next();
    if (pNode->IsLast()) m_pTail = pNode->Prev();
    pPos = bBackwards != 0 ? pNode->Prev() : pNode->Next();
    --m_nCount;
    delete pNode;
  }

  void Empty() {
    Node* pNode = m_pHead;
    while (pNode != nullptr) {
      Node* pNext = pNode->Next();
      delete pNode;
      pNode = pNext;
    }
    m_pHead = m_pTail = nullptr;
    m_nCount = 0;
  }

 private:
  // The check stays small enough to inline into every walk; the throw is kept
  // out of line.
  void _Check(const _KELPOS* pPos, const char* pszFunc) const {
    const int nRC = _CheckValidPos(pPos);
    if (nRC != 0) _Fail(nRC, pszFunc);
  }

  [[noreturn, gnu::noinline, gnu::cold]] static void _Fail(int nRC, const char* pszFunc) {
    throw CKelException(nRC, pszFunc);
  }

  Node* _NewFirst(const char* pszFunc) {
    Node* pNode = new (std::nothrow) Node(this);
    if (pNode == nullptr) throw CKelException(-10, pszFunc);
    return pNode;
  }

  Node* m_pHead;
  Node* m_pTail;
  KEL_CRITICAL_SECTION* m_pLock;
  int m_nCount;
};

#endif  // SRC_CONTAINERS_KEL_LIST_H_
