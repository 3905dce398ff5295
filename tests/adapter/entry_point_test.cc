// The entry points' frame: argument checks, the trace scope, the code
// returned and the last exception.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class EntryPointTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE e_t AS OBJECT (s VARCHAR2(10), n NUMBER(4))");
    defs_.Text("S", 10);
    defs_.Number("N", 4, 0);
    inst_ = NewObject("E_T");
    SetText(inst_, {"S"}, "x");
    SetNumber(inst_, {"N"}, "12");
  }
  DefList defs_;
  Instance inst_;
};

std::string ArgumentText(const char* pszFunc) {
  return std::string("-8|") + pszFunc + "|" + KelGetErrorText(-8);
}

TEST_F(EntryPointTest, CreateContextWithoutHolderIsRefused) {
  EXPECT_EQ(-8, adpCreateContext(nullptr, &trace_, nullptr));
  EXPECT_EQ("*ERR: in adpCreateContext (-2)\n", Trace());
  EXPECT_EQ(ArgumentText("adpCreateContext"), LastException());
}

TEST_F(EntryPointTest, CreateContextStoresTheNewHandle) {
  VARNADP* pCtx = reinterpret_cast<VARNADP*>(&trace_);
  EXPECT_EQ(0, adpCreateContext(&pCtx, nullptr, nullptr));
  EXPECT_NE(reinterpret_cast<VARNADP*>(&trace_), pCtx);
  EXPECT_EQ(0, adpDestroyContext(pCtx, nullptr));
}

TEST_F(EntryPointTest, DestroyNullContextIsRefused) {
  EXPECT_EQ(-8, adpDestroyContext(nullptr, &trace_));
  EXPECT_EQ("*ERR: in adpDestroyContext (-2)\n", Trace());
  EXPECT_EQ(ArgumentText("adpDestroyContext"), LastException());
}

TEST_F(EntryPointTest, ContextWithoutSpecialStringsUsesTheDefaults) {
  SetText(inst_, {"S"}, "|\r\n![]");
  ASSERT_EQ(0, Write(defs_.Head(), inst_));
  EXPECT_EQ("!|!\r\n!!![!]|12", Stream());
}

TEST_F(EntryPointTest, SuccessfulCallPrintsNothing) {
  ASSERT_EQ(0, Write(defs_.Head(), inst_));
  EXPECT_EQ("x|12", Stream());
  EXPECT_EQ("", Trace());
  EXPECT_EQ("none", LastException());
}

TEST_F(EntryPointTest, ProcessObjectChecksContextInstanceAndType) {
  Column_Def* pList = defs_.Head();
  EXPECT_EQ(-8, adpProcessObject(nullptr, &trace_, &stream_, &pList, env_, err_, svc_,
                                 inst_.pObject, inst_.pInd, 0, inst_.pTdo));
  EXPECT_EQ(ArgumentText("adpProcessObject"), LastException());
  EXPECT_EQ(-8, adpProcessObject(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, nullptr,
                                 inst_.pInd, 0, inst_.pTdo));
  EXPECT_EQ(-8, adpProcessObject(ctx_, &trace_, &stream_, &pList, env_, err_, svc_,
                                 inst_.pObject, inst_.pInd, 0, nullptr));
  EXPECT_EQ("*ERR: in adpProcessObject (-2)\n*ERR: in adpProcessObject (-2)\n"
            "*ERR: in adpProcessObject (-2)\n",
            Trace());
  EXPECT_EQ(defs_.Head(), pList);
  EXPECT_EQ("", Stream());
}

TEST_F(EntryPointTest, ProcessObjectRefusesANullStreamOrListHolder) {
  Column_Def* pList = defs_.Head();
  EXPECT_EQ(-8, adpProcessObject(ctx_, &trace_, nullptr, &pList, env_, err_, svc_,
                                 inst_.pObject, inst_.pInd, 0, inst_.pTdo));
  EXPECT_EQ(-8, adpProcessObject(ctx_, &trace_, &stream_, nullptr, env_, err_, svc_,
                                 inst_.pObject, inst_.pInd, 0, inst_.pTdo));
  EXPECT_EQ(ArgumentText("adpProcessObject"), LastException());
}

TEST_F(EntryPointTest, SetUpRefusesMissingHandlesAndList) {
  struct Case {
    OCIEnv* pEnv;
    OCIError* pErr;
    OCISvcCtx* pSvc;
    Column_Def* pList;
  };
  const Case cases[] = {{nullptr, err_, svc_, defs_.Head()},
                        {env_, nullptr, svc_, defs_.Head()},
                        {env_, err_, nullptr, defs_.Head()},
                        {env_, err_, svc_, nullptr}};
  for (const Case& c : cases) {
    ClearTrace();
    Column_Def* pList = c.pList;
    EXPECT_EQ(-8, adpProcessObject(ctx_, &trace_, &stream_, &pList, c.pEnv, c.pErr, c.pSvc,
                                   inst_.pObject, inst_.pInd, 0, inst_.pTdo));
    EXPECT_EQ("*ERR: in CAdp::_Init (-2)\n*ERR: in adpProcessObject (-2)\n", Trace());
    EXPECT_EQ(ArgumentText("CAdp::_Init"), LastException());
  }
  // The context stays usable.
  ClearTrace();
  ASSERT_EQ(0, Write(defs_.Head(), inst_));
  EXPECT_EQ("x|12", Stream());
}

TEST_F(EntryPointTest, CallWithoutTraceIsSilentOnTheEntryScope) {
  Column_Def* pList = nullptr;
  EXPECT_EQ(-8, adpProcessObject(ctx_, nullptr, &stream_, &pList, env_, err_, svc_,
                                 inst_.pObject, inst_.pInd, 0, inst_.pTdo));
  EXPECT_EQ("", Trace());
}

TEST_F(EntryPointTest, CppProcessObjectThrowsWithoutSettingTheLastException) {
  Column_Def* pList = defs_.Head();
  try {
    AdpProcessObject(ctx_, &trace_, stream_, pList, env_, err_, svc_, inst_.pObject, inst_.pInd,
                     0, nullptr);
    FAIL() << "no exception";
  } catch (const CKelException& e) {
    EXPECT_EQ(-8, e.GetRC());
    EXPECT_STREQ("AdpProcessObject", e.GetFunc());
  }
  EXPECT_EQ("none", LastException());
  EXPECT_EQ("*ERR: in AdpProcessObject (-2)\n", Trace());
  EXPECT_THROW(AdpProcessObject(nullptr, &trace_, stream_, pList, env_, err_, svc_,
                                inst_.pObject, inst_.pInd, 0, inst_.pTdo),
               CKelException);
  EXPECT_THROW(AdpProcessObject(ctx_, &trace_, stream_, pList, env_, err_, svc_, nullptr,
                                inst_.pInd, 0, inst_.pTdo),
               CKelException);
}

TEST_F(EntryPointTest, CppProcessObjectWritesAndPrintsNothing) {
  Column_Def* pList = defs_.Head();
  AdpProcessObject(ctx_, &trace_, stream_, pList, env_, err_, svc_, inst_.pObject, inst_.pInd, 0,
                   inst_.pTdo);
  EXPECT_EQ("x|12", Stream());
  EXPECT_EQ("", Trace());
}

TEST_F(EntryPointTest, CppProcessObjectPassesAdapterErrorsUnchanged) {
  Column_Def* pList = nullptr;
  try {
    AdpProcessObject(ctx_, &trace_, stream_, pList, env_, err_, svc_, inst_.pObject, inst_.pInd,
                     0, inst_.pTdo);
    FAIL() << "no exception";
  } catch (const CKelException& e) {
    EXPECT_EQ(-8, e.GetRC());
    EXPECT_STREQ("CAdp::_Init", e.GetFunc());
  }
  EXPECT_EQ("*ERR: in CAdp::_Init (-2)\n*ERR: in AdpProcessObject (-2)\n", Trace());
}

TEST_F(EntryPointTest, VersionSymbols) {
  EXPECT_EQ(0, std::strncmp(szVarnVersionLabel, "VarnVerLabel=", 13));
  EXPECT_STREQ(szFullZRWVersion, szVarnVersionLabel + 13);
  EXPECT_NE(nullptr, std::strstr(szFullZRWVersion, "64-bit"));
  EXPECT_NE(nullptr, std::strchr(szVersion, '('));
}

}  // namespace
}  // namespace adapter_test
