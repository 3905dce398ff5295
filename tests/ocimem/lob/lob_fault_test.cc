// Injected faults (ocimem.h) on every LOB call added for streaming, editing, opening and the
// locator queries, and on statements moving LOB data through plain buffers: the call answers
// the injected error, does nothing, and works again once the fault has fired.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

#include "lob_fixture.h"

namespace ocimem_test {
namespace {

sb4 CountingReadCallback(void* ctxp, const void*, ub4, ub1) {
  ++*static_cast<int*>(ctxp);
  return OCI_CONTINUE;
}

sb4 LastPieceCallback(void* ctxp, void*, ub4* lenp, ub1* piece) {
  ++*static_cast<int*>(ctxp);
  *lenp = 0;
  *piece = OCI_LAST_PIECE;
  return OCI_CONTINUE;
}

class LobFaultTest : public LobFixture, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    LobFixture::SetUp();
    ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true)) << FirstError(err_);
    ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "abc"));
    ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "xyz"));
    temp_ = NewTemporary(OCI_TEMP_CLOB);
    ASSERT_EQ(OCI_SUCCESS, WriteOne(temp_, "tmp"));
  }

  // One call of `function` with arguments that succeed when no fault is armed.
  sword Call(const std::string& function) {
    char buf[16] = "def";
    ub4 amount = 3;
    oraub8 bytes = 3;
    oraub8 chars = 0;
    ub1 form = 0;
    ub2 id = 0;
    boolean flag = FALSE;
    const std::map<std::string, std::function<sword()>> calls = {
        {"OCILobAppend", [&] { return OCILobAppend(svc_, err_, clob_, temp_); }},
        {"OCILobCopy", [&] { return OCILobCopy(svc_, err_, clob_, temp_, 3, 1, 1); }},
        {"OCILobCopy2", [&] { return OCILobCopy2(svc_, err_, clob_, temp_, 3, 1, 1); }},
        {"OCILobErase", [&] { return OCILobErase(svc_, err_, clob_, &amount, 1); }},
        {"OCILobErase2", [&] { return OCILobErase2(svc_, err_, clob_, &bytes, 1); }},
        {"OCILobOpen", [&] { return OCILobOpen(svc_, err_, clob_, OCI_LOB_READONLY); }},
        {"OCILobClose",
         [&] {
           return OCILobClose(svc_, err_, clob_);  // the test opened it before
         }},
        {"OCILobIsOpen", [&] { return OCILobIsOpen(svc_, err_, clob_, &flag); }},
        {"OCILobCharSetForm", [&] { return OCILobCharSetForm(env_, err_, clob_, &form); }},
        {"OCILobCharSetId", [&] { return OCILobCharSetId(env_, err_, clob_, &id); }},
        {"OCILobGetChunkSize", [&] { return OCILobGetChunkSize(svc_, err_, clob_, &amount); }},
        {"OCILobGetLength2", [&] { return OCILobGetLength2(svc_, err_, clob_, &bytes); }},
        {"OCILobTrim2", [&] { return OCILobTrim2(svc_, err_, clob_, 1); }},
        {"OCILobRead2",
         [&] {
           return OCILobRead2(svc_, err_, clob_, &bytes, &chars, 1, buf, sizeof buf,
                              OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT);
         }},
        {"OCILobWrite2",
         [&] {
           return OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, buf, 3, OCI_ONE_PIECE,
                               nullptr, nullptr, 0, SQLCS_IMPLICIT);
         }},
        {"OCILobWriteAppend",
         [&] {
           return OCILobWriteAppend(svc_, err_, clob_, &amount, buf, 3, OCI_ONE_PIECE, nullptr,
                                    nullptr, 0, SQLCS_IMPLICIT);
         }},
        {"OCILobRead",  // with a callback, which must not be called
         [&] {
           amount = 0;
           return OCILobRead(svc_, err_, clob_, &amount, 1, buf, 2, &callbacks_,
                             CountingReadCallback, 0, SQLCS_IMPLICIT);
         }},
        {"OCILobWrite",
         [&] {
           amount = 0;
           return OCILobWrite(svc_, err_, clob_, &amount, 1, buf, 3, OCI_FIRST_PIECE,
                              &callbacks_, LastPieceCallback, 0, SQLCS_IMPLICIT);
         }},
        {"OCIStmtExecute",  // a character buffer bound into a CLOB
         [&] {
           OCIStmt* stmt = Prepare("update docs set body = :1 where id = 1");
           OCIBind* b = nullptr;
           sword rc = OCIBindByPos(stmt, &b, err_, 1, buf, 3, SQLT_CHR, nullptr, nullptr,
                                   nullptr, 0, nullptr, OCI_DEFAULT);
           return rc != OCI_SUCCESS ? rc : Execute(stmt);
         }},
        {"OCIStmtFetch2",  // a CLOB fetched into a character buffer
         [&] {
           OCIStmt* stmt = Prepare("select body from docs where id = 1");
           OCIDefine* d = nullptr;
           fetched_[0] = 'q';
           sword rc = OCIDefineByPos(stmt, &d, err_, 1, fetched_, sizeof fetched_, SQLT_STR,
                                     nullptr, nullptr, nullptr, OCI_DEFAULT);
           if (rc == OCI_SUCCESS) rc = Execute(stmt, 0);
           return rc != OCI_SUCCESS ? rc : OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0,
                                                         OCI_DEFAULT);
         }},
    };
    return calls.at(function)();
  }

  OCILobLocator* temp_ = nullptr;
  int callbacks_ = 0;
  char fetched_[16] = {0};
};

TEST_P(LobFaultTest, InjectedFaultIsReportedAndChangesNothing) {
  const std::string function = GetParam();
  if (function == "OCILobClose") {
    ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READONLY));
  }
  ArmFault(function.c_str());
  EXPECT_EQ(OCI_ERROR, Call(function));
  EXPECT_EQ("ORA-03113: end-of-file on communication channel", FirstError(err_));
  EXPECT_EQ(0, callbacks_);
  if (function == "OCIStmtFetch2") {
    EXPECT_EQ('q', fetched_[0]);  // the buffer is untouched
  }
  EXPECT_EQ("abc", ReadAll(clob_));
  EXPECT_EQ("tmp", ReadAll(temp_));
  boolean open = FALSE;
  ASSERT_EQ(OCI_SUCCESS, OCILobIsOpen(svc_, err_, clob_, &open));
  EXPECT_EQ(function == "OCILobClose" ? TRUE : FALSE, open);
  // The fault has fired: the same call now does its work.
  sword rc = Call(function);
  EXPECT_TRUE(rc == OCI_SUCCESS) << function << ": " << rc << " " << FirstError(err_);
}

TEST_P(LobFaultTest, InjectedWarningIsPassedOn) {
  const std::string function = GetParam();
  if (function == "OCIStmtExecute" || function == "OCIStmtFetch2") return;  // statements' own
  const sb4 codes[] = {28002};
  const char* const texts[] = {"the password will expire within 7 days"};
  ocimemFaultArm(function.c_str(), 1, OCI_SUCCESS_WITH_INFO, codes, texts, 1);
  if (function == "OCILobClose") {
    ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READONLY));
  }
  EXPECT_EQ(OCI_SUCCESS_WITH_INFO, Call(function));
  EXPECT_EQ("ORA-28002: the password will expire within 7 days", FirstError(err_));
  EXPECT_EQ("abc", ReadAll(clob_));
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, LobFaultTest,
    ::testing::Values("OCILobAppend", "OCILobCopy", "OCILobCopy2", "OCILobErase", "OCILobErase2",
                      "OCILobOpen", "OCILobClose", "OCILobIsOpen", "OCILobCharSetForm",
                      "OCILobCharSetId", "OCILobGetChunkSize", "OCILobGetLength2", "OCILobTrim2",
                      "OCILobRead2", "OCILobWrite2", "OCILobWriteAppend", "OCILobRead",
                      "OCILobWrite", "OCIStmtExecute", "OCIStmtFetch2"),
    [](const ::testing::TestParamInfo<const char*>& info) { return std::string(info.param); });

}  // namespace
}  // namespace ocimem_test
