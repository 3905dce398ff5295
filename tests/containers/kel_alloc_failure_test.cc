// Every allocation of every container operation is made to fail in turn:
// the n-th tracked allocation fails, for n = 1, 2, ... until a run completes
// without an injected failure. Each run checks the exception (code and
// function text), what the operation promises to leave behind, and that no
// block or payload leaked.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "alloc_hooks.h"
#include "containers/kel_containers.h"
#include "kel_test_util.h"

namespace {

using kel_test::BuildSample;
using kel_test::ChainShape;
using kel_test::Find;
using kel_test::ListIsConsistent;
using kel_test::LiveTrackedBlocks;
using kel_test::Payload;
using kel_test::Shape;
using kel_test::Tree;
using kel_test::TreeIsConsistent;
using ShapeList = std::vector<std::pair<int, int>>;

// Result of one run of an operation with the n-th allocation failing.
struct Outcome {
  bool injected = false;
  bool threw = false;
  int rc = 0;
  std::string func;
};

// Runs op with the n-th tracked allocation failing and records what it threw.
Outcome RunFailing(unsigned long n, const std::function<void()>& op) {
  Outcome run;
  kel_test::ArmFailure(n);
  try {
    op();
  } catch (const CKelException& e) {
    run.threw = true;
    run.rc = e.GetRC();
    run.func = e.GetFunc();
  }
  run.injected = kel_test::DisarmFailure();
  return run;
}

// The sweep itself: for each n, setup (not counted) builds the state, op runs
// with the n-th allocation failing, check inspects what is left; the sweep
// ends at the first n whose run needed no failure. Returns the function texts
// of the failures, in order, after checking the code of each is -10 and that
// an injected failure always surfaced as an exception.
template <class State>
std::vector<std::string> Sweep(const std::function<void(State&)>& setup,
                               const std::function<void(State&)>& op,
                               const std::function<void(State&, const Outcome&)>& check) {
  std::vector<std::string> funcs;
  for (unsigned long n = 1; n < 100000; ++n) {
    SCOPED_TRACE(::testing::Message() << "failing allocation #" << n);
    const long blocks = LiveTrackedBlocks();
    const long payloads = Payload::live;
    Outcome run;
    {
      State state;
      setup(state);
      run = RunFailing(n, [&] { op(state); });
      EXPECT_EQ(run.injected, run.threw);
      if (run.threw) {
        EXPECT_EQ(run.rc, -10);
        funcs.push_back(run.func);
      }
      check(state, run);
    }
    EXPECT_EQ(LiveTrackedBlocks(), blocks) << "blocks leaked";
    EXPECT_EQ(Payload::live, payloads) << "payloads leaked";
    if (!run.injected) break;
  }
  return funcs;
}

// ---- list ----

struct ListState {
  CKelList<int> list{0};
  std::vector<int> before;
};

std::vector<int> Values(CKelList<int>& list) {
  std::vector<int> out;
  for (_KELPOS* pos = list.HeadPos(); pos != nullptr;) out.push_back(list.GetNext(pos));
  return out;
}

struct ListOpCase {
  const char* name;
  int initial_size;
  std::function<void(CKelList<int>&)> op;
  std::vector<std::string> failures;
};

TEST(AllocFailure, ListInsertionsLeaveTheListUnchanged) {
  const std::vector<ListOpCase> cases = {
      {"NewHead on empty", 0, [](CKelList<int>& l) { l.NewHead(); }, {"CKelList<>::NewHead"}},
      {"NewTail on empty", 0, [](CKelList<int>& l) { l.NewTail(); }, {"CKelList<>::NewTail"}},
      {"NewHead", 2, [](CKelList<int>& l) { l.NewHead(); }, {"CKelListNode<>::NewBefore"}},
      {"NewTail", 2, [](CKelList<int>& l) { l.NewTail(); }, {"CKelListNode<>::NewAfter"}},
      {"NewAfter head", 2, [](CKelList<int>& l) { l.NewAfter(l.HeadPos()); }, {"CKelListNode<>::NewAfter"}},
      {"NewAfter tail", 2, [](CKelList<int>& l) { l.NewAfter(l.TailPos()); }, {"CKelListNode<>::NewAfter"}},
      {"NewAfter only", 1, [](CKelList<int>& l) { l.NewAfter(l.HeadPos()); }, {"CKelListNode<>::NewAfter"}},
  };
  for (const ListOpCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto funcs = Sweep<ListState>(
        [&](ListState& s) {
          for (int i = 0; i < c.initial_size; ++i) s.list.GetAtPos(s.list.NewTail()) = i + 1;
          s.before = Values(s.list);
        },
        [&](ListState& s) { c.op(s.list); },
        [&](ListState& s, const Outcome& run) {
          EXPECT_TRUE(ListIsConsistent(s.list));
          EXPECT_EQ(s.list.GetCount(), c.initial_size + (run.threw ? 0 : 1));
          if (run.threw) {
            EXPECT_EQ(Values(s.list), s.before);
          }
        });
    EXPECT_EQ(funcs, c.failures);
  }
}

TEST(AllocFailure, ThreadSafeListConstructionLeaksNothing) {
  struct State {};
  auto funcs = Sweep<State>([](State&) {}, [](State&) { CKelList<int> list(1); }, [](State&, const Outcome&) {});
  EXPECT_EQ(funcs, (std::vector<std::string>{"CKelList<>::CKelList"}));
}

// ---- tree linking ----

struct TreeState {
  Tree root;
  ShapeList before;
};

TEST(AllocFailure, NewAsLastChildLeavesTheTreeUnchanged) {
  for (bool with_children : {false, true}) {
    SCOPED_TRACE(with_children ? "parent with children" : "leaf parent");
    auto funcs = Sweep<TreeState>(
        [&](TreeState& s) {
          if (with_children) BuildSample(s.root);
          s.before = Shape(s.root);
        },
        [](TreeState& s) { s.root.NewAsLastChild().m_Data.id = 99; },
        [](TreeState& s, const Outcome& run) {
          EXPECT_TRUE(TreeIsConsistent(s.root));
          if (run.threw) {
            EXPECT_EQ(Shape(s.root), s.before);
          } else {
            EXPECT_EQ(Shape(s.root).back(), std::make_pair(1, 99));
          }
        });
    const char* list_func = with_children ? "CKelListNode<>::NewAfter" : "CKelList<>::NewTail";
    EXPECT_EQ(funcs, (std::vector<std::string>{"CKelTree::NewAsLastChild", list_func}));
  }
}

TEST(AllocFailure, AddAsFirstChildAndAddAfterLeaveTheNodeUnattached) {
  struct Case {
    const char* name;
    bool leaf_parent;
    bool after;
    const char* func;
  };
  const Case cases[] = {
      {"AddAsFirstChild on a leaf", true, false, "CKelList<>::NewHead"},
      {"AddAsFirstChild", false, false, "CKelListNode<>::NewBefore"},
      {"AddAfter", false, true, "CKelListNode<>::NewAfter"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    struct State {
      Tree root;
      Tree* node = nullptr;
      ShapeList before;
      ~State() {
        if (node != nullptr && node->GetParent() == nullptr) delete node;
      }
    };
    auto funcs = Sweep<State>(
        [&](State& s) {
          if (!c.leaf_parent) BuildSample(s.root);
          s.node = new Tree();
          s.node->m_Data.id = 50;
          s.before = Shape(s.root);
        },
        [&](State& s) {
          if (c.after) {
            Find(s.root, 6)->AddAfter(*s.node);
          } else {
            s.root.AddAsFirstChild(*s.node);
          }
        },
        [](State& s, const Outcome& run) {
          EXPECT_TRUE(TreeIsConsistent(s.root));
          if (run.threw) {
            EXPECT_EQ(s.node->GetParent(), nullptr);
            EXPECT_EQ(s.node->GetPos(), nullptr);
            EXPECT_EQ(Shape(s.root), s.before);
          }
        });
    EXPECT_EQ(funcs, (std::vector<std::string>{c.func}));
  }
}

// ---- copies ----

// The function texts a chain copy reports, allocation by allocation: for
// each copied node in pre-order, first the node itself, then its list entry.
// A node first in its chain is copied by CopyAsFirstChild (top level: as the
// operation says) into a list that is empty except at the top level.
std::vector<std::string> ChainCopyFailures(const Tree& src, bool top_as_first_child, bool top_list_empty) {
  std::vector<std::string> out;
  std::function<void(const Tree&, int)> chain = [&](const Tree& first, int depth) {
    for (const Tree* node = &first; node != nullptr; node = node->GetNextSibling()) {
      const bool as_first = node == &first && (depth > 0 || top_as_first_child);
      if (as_first) {
        out.emplace_back("CKelTree::CopyAsFirstChild");
        out.emplace_back(depth > 0 || top_list_empty ? "CKelList<>::NewHead" : "CKelListNode<>::NewBefore");
      } else {
        out.emplace_back("CKelTree::CopyAfter");
        out.emplace_back("CKelListNode<>::NewAfter");
      }
      if (const Tree* child = node->GetFirstChild()) chain(*child, depth + 1);
    }
  };
  chain(src, 0);
  return out;
}

// Nodes completely linked when allocation n failed: two allocations a node.
std::size_t LinkedBefore(unsigned long n) { return static_cast<std::size_t>((n - 1) / 2); }

TEST(AllocFailure, CloneReleasesEverythingAndLeavesTheSourceUnchanged) {
  struct State {
    Tree root;
    Tree* clone = nullptr;
    ~State() { delete clone; }
  };
  Tree reference;
  BuildSample(reference);
  const ShapeList source_shape = Shape(*Find(reference, 1));
  auto funcs = Sweep<State>([](State& s) { BuildSample(s.root); },
                            [](State& s) { s.clone = Find(s.root, 1)->Clone(); },
                            [&](State& s, const Outcome& run) {
                              EXPECT_EQ(Shape(*Find(s.root, 1)), source_shape);
                              EXPECT_TRUE(TreeIsConsistent(s.root));
                              if (run.threw) {
                                EXPECT_EQ(s.clone, nullptr);
                              } else {
                                ASSERT_NE(s.clone, nullptr);
                                EXPECT_EQ(Shape(*s.clone), source_shape);
                              }
                            });
  std::vector<std::string> expected{"CKelTree::Clone"};
  for (auto& f : ChainCopyFailures(*Find(reference, 1)->GetFirstChild(), true, true)) expected.push_back(f);
  EXPECT_EQ(funcs, expected);
}

TEST(AllocFailure, DeepCopyConstructorReleasesWhatItCopied) {
  Tree reference;
  BuildSample(reference);
  auto funcs = Sweep<TreeState>([](TreeState& s) { BuildSample(s.root); },
                                [](TreeState& s) {
                                  Tree copy(s.root);
                                  EXPECT_EQ(Shape(copy), Shape(s.root));
                                },
                                [&](TreeState& s, const Outcome&) { EXPECT_EQ(Shape(s.root), Shape(reference)); });
  EXPECT_EQ(funcs, ChainCopyFailures(*reference.GetFirstChild(), true, true));
}

// A failed CopyAsFirstChild keeps the copies made so far: the first k nodes
// of the source chain in pre-order, in front of the existing children.
TEST(AllocFailure, CopyAsFirstChildKeepsTheCompletedPrefixAttached) {
  struct State {
    Tree source;
    Tree dest;
  };
  Tree reference;
  BuildSample(reference);
  const ShapeList chain = ChainShape(*Find(reference, 1));
  unsigned long n = 0;
  auto funcs = Sweep<State>(
      [&](State& s) {
        ++n;
        BuildSample(s.source);
        s.dest.m_Data.id = 200;
        kel_test::AddChild(s.dest, 100);
      },
      [](State& s) { s.dest.CopyAsFirstChild(*Find(s.source, 1)); },
      [&](State& s, const Outcome& run) {
        EXPECT_EQ(Shape(s.source), Shape(reference));
        EXPECT_TRUE(TreeIsConsistent(s.dest));
        const std::size_t k = run.threw ? LinkedBefore(n) : chain.size();
        ShapeList expected{{0, 200}};
        for (std::size_t i = 0; i < k; ++i) expected.emplace_back(chain[i].first + 1, chain[i].second);
        expected.emplace_back(1, 100);
        EXPECT_EQ(Shape(s.dest), expected);
      });
  EXPECT_EQ(funcs, ChainCopyFailures(*Find(reference, 1), true, false));
}

TEST(AllocFailure, CopyAfterKeepsTheCompletedPrefixAttached) {
  struct State {
    Tree source;
    Tree dest;
  };
  Tree reference;
  BuildSample(reference);
  const ShapeList chain = ChainShape(*Find(reference, 1));
  unsigned long n = 0;
  auto funcs = Sweep<State>(
      [&](State& s) {
        ++n;
        BuildSample(s.source);
        s.dest.m_Data.id = 200;
        kel_test::AddChild(s.dest, 100);
        kel_test::AddChild(s.dest, 101);
      },
      [](State& s) { s.dest.GetFirstChild()->CopyAfter(*Find(s.source, 1)); },
      [&](State& s, const Outcome& run) {
        EXPECT_EQ(Shape(s.source), Shape(reference));
        EXPECT_TRUE(TreeIsConsistent(s.dest));
        const std::size_t k = run.threw ? LinkedBefore(n) : chain.size();
        ShapeList expected{{0, 200}, {1, 100}};
        for (std::size_t i = 0; i < k; ++i) expected.emplace_back(chain[i].first + 1, chain[i].second);
        expected.emplace_back(1, 101);
        EXPECT_EQ(Shape(s.dest), expected);
      });
  EXPECT_EQ(funcs, ChainCopyFailures(*Find(reference, 1), false, false));
}

// ---- allocator, string, byte array ----

template <class T>
struct BufferState {
  std::vector<T> before;
};

TEST(AllocFailure, StringLifecycleFailsCleanlyAtEveryStep) {
  struct State {};
  auto funcs = Sweep<State>([](State&) {},
                            [](State&) {
                              CKelString<char> s(0, 1);
                              std::strcpy(s.SetSize(8), "abcdefg");
                              s.SetSize(64);
                              EXPECT_STREQ(s.GetPtr(), "abcdefg");
                              CKelString<char> t(3, 2);
                              EXPECT_STREQ(t.GetPtr(), "");
                              s.SetSize(0);
                            },
                            [](State&, const Outcome&) {});
  EXPECT_EQ(funcs, std::vector<std::string>(4, "CKelAllocator<>::Alloc"));
}

TEST(AllocFailure, ByteArrayLifecycleFailsCleanlyAtEveryStep) {
  struct State {};
  auto funcs = Sweep<State>([](State&) {},
                            [](State&) {
                              CKelArray<unsigned char> a(4, 1, 1);
                              a.GetPtr()[0] = 1;
                              a.SetSize(9, nullptr);
                              EXPECT_EQ(a.GetPtr()[0], 1);
                              a.SetSize(2, nullptr);
                              a.SetSize(0, nullptr);
                            },
                            [](State&, const Outcome&) {});
  EXPECT_EQ(funcs, std::vector<std::string>(3, "CKelAllocator<>::Alloc"));
}

TEST(AllocFailure, FailedResizeLeavesBufferCapacityAndSizeIntact) {
  struct State {
    CKelAllocator<unsigned char> a{5, 4, 1};
    unsigned char* data = nullptr;
  };
  auto funcs = Sweep<State>(
      [](State& s) {
        for (int i = 0; i < 5; ++i) s.a.GetData()[i] = static_cast<unsigned char>(i + 1);
        s.data = s.a.GetData();
      },
      [](State& s) { s.a.SetSize(13, s.a.GetData() + 1); },
      [](State& s, const Outcome& run) {
        if (run.threw) {
          EXPECT_EQ(s.a.GetData(), s.data);
          EXPECT_EQ(s.a.GetSizeAllocated(), 8u);
          EXPECT_EQ(s.a.GetSize(), 5u);
        } else {
          EXPECT_EQ(s.a.GetSizeAllocated(), 16u);
        }
        for (int i = 0; i < 5; ++i) EXPECT_EQ(s.a.GetData()[i], i + 1);
      });
  EXPECT_EQ(funcs, std::vector<std::string>(1, "CKelAllocator<>::Alloc"));
}

}  // namespace
