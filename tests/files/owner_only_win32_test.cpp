#include "files/owner_only_win32.h"

#include <gtest/gtest.h>
#include <sddl.h>

namespace quorvelle::testing {

TEST(OwnerOnlyAccess, NamesTheUserAndNobodyElse) {
    OwnerOnlyAccess access;
    ASSERT_NE(access.attributes(), nullptr);
    LPWSTR text = nullptr;
    ASSERT_NE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
                  access.attributes()->lpSecurityDescriptor, SDDL_REVISION_1,
                  DACL_SECURITY_INFORMATION, &text, nullptr),
              0);
    const std::wstring list = text;
    LocalFree(text);
    EXPECT_TRUE(list.starts_with(L"D:P(A;;FA;;;") && list.ends_with(L")")) << list.size();
    EXPECT_EQ(list.find(L'(', 4), std::wstring::npos) << "more than one entry";
}

}  // namespace quorvelle::testing
