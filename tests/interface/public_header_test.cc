#include <varnadp.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

extern "C" {
size_t varnadp_c_column_def_size(void);
size_t varnadp_c_column_def_next_offset(void);
size_t varnadp_c_column_def_flags_offset(void);
size_t varnadp_c_special_release_offset(void);
int varnadp_c_flags(void);
const char* varnadp_c_version(void);
}

namespace {

// Member widths and the C++ entry points' signatures are compile-time facts.
static_assert(std::is_same_v<decltype(Column_Def::ColumnName), char*>);
static_assert(std::is_same_v<decltype(Column_Def::DataSize), unsigned long>);
static_assert(sizeof(Column_Def::DisplaySize) == 4 &&
              std::is_unsigned_v<decltype(Column_Def::DisplaySize)>);
static_assert(std::is_same_v<decltype(Column_Def::Precision), unsigned long>);
static_assert(sizeof(Column_Def::Scale) == 2 && std::is_signed_v<decltype(Column_Def::Scale)>);
static_assert(sizeof(Column_Def::DataType) == 2 &&
              std::is_unsigned_v<decltype(Column_Def::DataType)>);
static_assert(sizeof(Column_Def::ExtType) == 2);
static_assert(sizeof(Column_Def::Flags) == 2 && std::is_unsigned_v<decltype(Column_Def::Flags)>);
static_assert(std::is_same_v<decltype(Column_Def::TypeName), char*>);
static_assert(sizeof(Column_Def::InCollection) == 4 &&
              std::is_signed_v<decltype(Column_Def::InCollection)>);
static_assert(std::is_same_v<decltype(Column_Def::Next), Column_Def*>);

using ObjFn = void (*)(VARNADP*, CKelTrace*, CKelStream&, Column_Def*&, OCIEnv*, OCIError*,
                       OCISvcCtx*, void*, short*, short, OCIType*);
using StrFn = int (*)(VARNADP*, CKelTrace*, CKelStream&, Column_Def*&, OCIEnv*, OCIError*,
                      OCISvcCtx*, void*&, short*&, short&, OCIType*);
using BufFn = int (*)(VARNADP*, CKelTrace*, const void*, unsigned long, Column_Def*&, OCIEnv*,
                      OCIError*, OCISvcCtx*, void*&, short*&, short&, OCIType*);
using LobFn = void (*)(VARNADP*, CKelTrace*, const char*);
static_assert(std::is_same_v<decltype(&AdpProcessObject), ObjFn>);
static_assert(std::is_same_v<decltype(&AdpProcessStream), StrFn>);
static_assert(std::is_same_v<decltype(&AdpProcessBuffer), BufFn>);
static_assert(std::is_same_v<decltype(&AdpWriteLobs), LobFn>);

TEST(PublicHeader, ColumnDefLayoutIsTheSameInCAndCxx) {
  EXPECT_EQ(varnadp_c_column_def_size(), sizeof(Column_Def));
  EXPECT_EQ(sizeof(Column_Def), 1424u);
  EXPECT_EQ(varnadp_c_column_def_next_offset(), offsetof(Column_Def, Next));
  EXPECT_EQ(varnadp_c_column_def_flags_offset(), offsetof(Column_Def, Flags));
  EXPECT_EQ(varnadp_c_special_release_offset(), offsetof(DB_SPECIAL_STRINGS, szRelease));
}

TEST(PublicHeader, ColumnDefMembersAreInDeclaredOrder) {
  EXPECT_LT(offsetof(Column_Def, ColumnName), offsetof(Column_Def, DataSize));
  EXPECT_LT(offsetof(Column_Def, DataSize), offsetof(Column_Def, DisplaySize));
  EXPECT_LT(offsetof(Column_Def, DisplaySize), offsetof(Column_Def, Precision));
  EXPECT_LT(offsetof(Column_Def, Precision), offsetof(Column_Def, Scale));
  EXPECT_LT(offsetof(Column_Def, Scale), offsetof(Column_Def, DataType));
  EXPECT_LT(offsetof(Column_Def, DataType), offsetof(Column_Def, ExtType));
  EXPECT_LT(offsetof(Column_Def, ExtType), offsetof(Column_Def, Flags));
  EXPECT_LT(offsetof(Column_Def, Flags), offsetof(Column_Def, TypeName));
  EXPECT_LT(offsetof(Column_Def, TypeName), offsetof(Column_Def, InCollection));
  EXPECT_LT(offsetof(Column_Def, InCollection), offsetof(Column_Def, Next));
}

TEST(PublicHeader, SpecialStringsOffsets) {
  EXPECT_EQ(offsetof(DB_SPECIAL_STRINGS, szDelimiterLen), 0u);
  EXPECT_EQ(offsetof(DB_SPECIAL_STRINGS, szTerminatorLen), 4u);
  EXPECT_EQ(offsetof(DB_SPECIAL_STRINGS, szDelimiter), 8u);
  EXPECT_EQ(offsetof(DB_SPECIAL_STRINGS, szTerminator), 72u);
  EXPECT_EQ(offsetof(DB_SPECIAL_STRINGS, szRelease), 136u);
  EXPECT_EQ(sizeof(DB_SPECIAL_STRINGS::szDelimiter), 64u);
  EXPECT_EQ(sizeof(DB_SPECIAL_STRINGS::szTerminator), 64u);
}

TEST(PublicHeader, FlagValues) {
  EXPECT_EQ(COLDEF_COMPLEX, 0x1000);
  EXPECT_EQ(COLDEF_END, 0x2000);
  EXPECT_EQ(COLDEF_DEFINED, 0x4000);
  EXPECT_EQ(varnadp_c_flags(), 0x7000);
}

TEST(PublicHeader, VersionSymbolsAreConsistent) {
  EXPECT_STREQ(varnadp_c_version(), szVersion);
  EXPECT_GT(std::strlen(szVersion), 0u);
  EXPECT_NE(std::strchr(szVersion, '('), nullptr);
  EXPECT_NE(std::strstr(szFullZRWVersion, "64-bit"), nullptr);
  EXPECT_EQ(std::strncmp(szVarnVersionLabel, "VarnVerLabel=", 13), 0);
  EXPECT_STREQ(szVarnVersionLabel + 13, szFullZRWVersion);
  EXPECT_GT(std::strlen(szMainProductName), 0u);
  EXPECT_GT(std::strlen(szCopyright), 0u);
}

}  // namespace
