#include "tools/kslsim/RequestGuard.h"

#include <gtest/gtest.h>

namespace kslsim {
namespace {

TEST(RequestGuard, PassesNumbersOf64Bits) {
  for (const char* text :
       {"", "no tags", "<i8>0</i8>", "<i8>-9223372036854775808</i8>", "<i8>9223372036854775807</i8>",
        "<ex:i8 xmlns:ex='x'>5</ex:i8>", "<i4>99999999999999999999</i4>", "<i88>abc</i88>", "<value>i8</value>"})
    EXPECT_TRUE(isSafeForLibrary(text)) << text;
}

TEST(RequestGuard, StopsWhatWouldEndTheProcess) {
  for (const char* text :
       {"<i8>9223372036854775808</i8>", "<i8>-9223372036854775809</i8>", "<i8>abc</i8>",
        "<ex:i8>99999999999999999999</ex:i8>", "<i8></i8>", "<i8/>", "<i8 >1x</i8>", "<i8\n>x</i8>", "<i8> 5</i8>",
        "<i8>1<!-- --></i8>", "<i8><![CDATA[x]]></i8>", "<i8>&#120;</i8>", "<i8>5", "<i8",
        "<!DOCTYPE a [<!ENTITY b '<i8>x</i8>'>]>", "<i8>5</i8><i8>x</i8>"})
    EXPECT_FALSE(isSafeForLibrary(text)) << text;
}

}  // namespace
}  // namespace kslsim
