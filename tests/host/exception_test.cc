#include <host/kel.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

namespace {

const KEL_ERR_MSG kAdapterTable[] = {
    {-1101, "Unsupported data type"},
    {-1102, "Invalid relese character position"},
    {-1103, "Bad format string"},
};

struct HostCodeText {
  int nCode;
  const char* pszText;
};

const HostCodeText kHostCodes[] = {
    {-2, "Operation did not complete"},
    {-8, "Invalid argument"},
    {-9, "Position belongs to another list"},
    {-10, "Out of memory"},
    {-11, "File input/output error"},
    {-13, "Database connection lost"},
    {-18, "Value conversion failed"},
    {-21, "Large object transfer failed"},
    {-22, "Node is not in a tree"},
    {-23, "Node is already in a tree"},
    {-24, "Database error"},
    {-25, "Buffer capacity exceeded"},
    {1, "Unexpected data in stream"},
};

TEST(KelException, EveryHostCodeHasItsOwnText) {
  for (const HostCodeText& row : kHostCodes) {
    SCOPED_TRACE(row.nCode);
    CKelException e(row.nCode, "F");
    EXPECT_EQ(row.nCode, e.GetRC());
    EXPECT_STREQ(row.pszText, e.GetText());
    EXPECT_STREQ(row.pszText, KelGetErrorText(row.nCode));
    EXPECT_STRNE("Unknown error", e.GetText());
  }
}

TEST(KelException, HostTextsAreDistinct) {
  for (const HostCodeText& a : kHostCodes) {
    for (const HostCodeText& b : kHostCodes) {
      if (a.nCode != b.nCode) {
        EXPECT_STRNE(a.pszText, b.pszText);
      }
    }
  }
}

TEST(KelException, UnknownCodeGetsGenericText) {
  EXPECT_STREQ("Unknown error", CKelException(-777, "F").GetText());
  EXPECT_STREQ("Unknown error", CKelException(0, "F").GetText());
  EXPECT_STREQ("Unknown error", KelGetErrorText(12345));
}

TEST(KelException, CallerTableTextComesFirst) {
  CKelException e(-1102, "CAdpReleseParser::GetNextBlock", kAdapterTable, 3);
  EXPECT_EQ(-1102, e.GetRC());
  EXPECT_STREQ("Invalid relese character position", e.GetText());
  EXPECT_STREQ("CAdpReleseParser::GetNextBlock", e.GetFunc());
}

TEST(KelException, CallerTableOverridesHostText) {
  const KEL_ERR_MSG table[] = {{-8, "Own text for -8"}};
  EXPECT_STREQ("Own text for -8", CKelException(-8, "F", table, 1).GetText());
}

TEST(KelException, HostCodeMissingFromCallerTableFallsBackToHost) {
  CKelException e(-8, "CAdp::_Init", kAdapterTable, 3);
  EXPECT_STREQ("Invalid argument", e.GetText());
  EXPECT_STREQ("Unexpected data in stream",
               CKelException(1, "CAdp::_ReadStream", kAdapterTable, 3).GetText());
}

TEST(KelException, CountLimitsTheRowsSearched) {
  EXPECT_STREQ("Unknown error",
               CKelException(-1103, "F", kAdapterTable, 2).GetText());
  EXPECT_STREQ("Unknown error",
               CKelException(-1101, "F", kAdapterTable, 0).GetText());
}

TEST(KelException, NullTableIsAllowed) {
  EXPECT_STREQ("Out of memory", CKelException(-10, "F", nullptr, 5).GetText());
}

TEST(KelException, NullFunctionNameBecomesEmpty) {
  EXPECT_STREQ("", CKelException(-8, nullptr).GetFunc());
}

TEST(KelException, TextOutlivesTemporaryTableAndName) {
  CKelException* pKept = nullptr;
  {
    std::string text = "temporary text";
    std::string func = "Temp::Func";
    KEL_ERR_MSG table[] = {{-5000, text.c_str()}};
    pKept = new CKelException(-5000, func.c_str(), table, 1);
    text.assign(text.size(), 'x');
    func.assign(func.size(), 'y');
  }
  EXPECT_STREQ("temporary text", pKept->GetText());
  EXPECT_STREQ("Temp::Func", pKept->GetFunc());
  delete pKept;
}

TEST(KelException, LongNameAndTextAreCutNotOverrun) {
  std::string longName(500, 'n');
  std::string longText(1000, 't');
  KEL_ERR_MSG table[] = {{-6000, longText.c_str()}};
  CKelException e(-6000, longName.c_str(), table, 1);
  EXPECT_EQ(std::string(CKelException::KEL_EXC_FUNC_MAX - 1, 'n'), e.GetFunc());
  EXPECT_EQ(std::string(CKelException::KEL_EXC_TEXT_MAX - 1, 't'), e.GetText());
}

TEST(KelException, CopyKeepsEverything) {
  CKelException a(-1101, "CAdp::_OraFieldToStream", kAdapterTable, 3);
  CKelException b(a);
  CKelException c(-8, "other");
  c = a;
  for (const CKelException* p : {&b, &c}) {
    EXPECT_EQ(-1101, p->GetRC());
    EXPECT_STREQ("CAdp::_OraFieldToStream", p->GetFunc());
    EXPECT_STREQ("Unsupported data type", p->GetText());
  }
}

TEST(KelException, CodeIsTheFirstMember) {
  CKelException e(-24, "F");
  int nAtStart = 0;
  memcpy(&nAtStart, &e, sizeof(nAtStart));
  EXPECT_EQ(-24, nAtStart);
}

TEST(KelException, ThrownByValueCaughtByReference) {
  try {
    throw CKelException(-21, "CAdp::_OraStreamToLobField", kAdapterTable, 3);
  } catch (const CKelException& e) {
    EXPECT_EQ(-21, e.GetRC());
    EXPECT_STREQ("Large object transfer failed", e.GetText());
    return;
  }
  FAIL() << "not caught";
}

TEST(KelLastException, NoneSetOnAFreshThread) {
  std::thread([] {
    CKelException out(-99, "untouched");
    EXPECT_EQ(0, KelGetLastException(&out));
    EXPECT_EQ(0, KelGetLastException(nullptr));
    EXPECT_EQ(-99, out.GetRC());
    EXPECT_STREQ("untouched", out.GetFunc());
  }).join();
}

TEST(KelLastException, KeepsCodeTextAndFunction) {
  KelSetLastException(CKelException(-1103, "CAdp::_OraStreamToField",
                                    kAdapterTable, 3));
  CKelException out(0, "");
  ASSERT_EQ(1, KelGetLastException(&out));
  EXPECT_EQ(-1103, out.GetRC());
  EXPECT_STREQ("Bad format string", out.GetText());
  EXPECT_STREQ("CAdp::_OraStreamToField", out.GetFunc());
  KelClearLastException();
}

TEST(KelLastException, LaterReplacesEarlier) {
  KelSetLastException(CKelException(-8, "first"));
  KelSetLastException(CKelException(-10, "second"));
  CKelException out(0, "");
  ASSERT_EQ(1, KelGetLastException(&out));
  EXPECT_EQ(-10, out.GetRC());
  EXPECT_STREQ("second", out.GetFunc());
  KelClearLastException();
}

TEST(KelLastException, ClearForgetsIt) {
  KelSetLastException(CKelException(-8, "F"));
  EXPECT_EQ(1, KelGetLastException(nullptr));
  KelClearLastException();
  EXPECT_EQ(0, KelGetLastException(nullptr));
}

TEST(KelLastException, EachThreadKeepsItsOwn) {
  KelSetLastException(CKelException(-24, "main thread"));
  int nOtherBefore = -1;
  CKelException otherAfter(0, "");
  std::thread other([&] {
    nOtherBefore = KelGetLastException(nullptr);
    KelSetLastException(CKelException(-13, "other thread"));
    KelGetLastException(&otherAfter);
  });
  other.join();
  EXPECT_EQ(0, nOtherBefore);
  EXPECT_EQ(-13, otherAfter.GetRC());
  EXPECT_STREQ("other thread", otherAfter.GetFunc());

  CKelException mine(0, "");
  ASSERT_EQ(1, KelGetLastException(&mine));
  EXPECT_EQ(-24, mine.GetRC());
  EXPECT_STREQ("main thread", mine.GetFunc());
  KelClearLastException();
}

TEST(KelLastException, TwoThreadsSettingConcurrentlyDoNotMix) {
  auto worker = [](int nCode, const char* pszName, int* pnMismatches) {
    for (int i = 0; i < 2000; ++i) {
      KelSetLastException(CKelException(nCode, pszName));
      CKelException out(0, "");
      if (KelGetLastException(&out) != 1 || out.GetRC() != nCode ||
          strcmp(out.GetFunc(), pszName) != 0) {
        ++*pnMismatches;
      }
    }
  };
  int nA = 0;
  int nB = 0;
  std::thread a(worker, -8, "thread A", &nA);
  std::thread b(worker, -10, "thread B", &nB);
  a.join();
  b.join();
  EXPECT_EQ(0, nA);
  EXPECT_EQ(0, nB);
}

}  // namespace
