#include <gtest/gtest.h>

#include "desk/project/production/Production.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "host/project/SharedProjectsManager.h"

TEST(ProductionTest, APathLiesWithinAFolderByWholeComponents) {
    using host::Utilities::IsPathWithinDirectory;
    EXPECT_TRUE(IsPathWithinDirectory(u"/p/a/b", u"/p", false) && IsPathWithinDirectory(u"/p", u"/", false));
    EXPECT_TRUE(IsPathWithinDirectory(u"/p", u"/p", true) && !IsPathWithinDirectory(u"/p", u"/p", false));
    EXPECT_FALSE(IsPathWithinDirectory(u"/pq", u"/p", true) || IsPathWithinDirectory(u"/p", u"", true));
    desk::Production::Instance().Open(u"/vol/north");
    for (const char16_t* path : {u"/vol/north", u"/vol/northern/a", u"/vol/north/../a"})
        EXPECT_FALSE(host::IsWithinCurrentZuProductionFolder(path)) << host::UTF16to8(path);
    desk::Production::Instance().Close();
    EXPECT_FALSE(host::IsTheZuProductionTrashDirectory(u"") || host::IsInZuProductionTrash(u"", true));
}
