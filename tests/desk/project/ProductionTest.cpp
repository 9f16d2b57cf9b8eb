#include <gtest/gtest.h>

#include "desk/project/production/Production.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "host/project/SharedProjectsManager.h"

namespace {

class ProductionTest : public testing::Test {
protected:
    ~ProductionTest() override { mProduction.Close(); }
    desk::Production& mProduction = desk::Production::Instance();
};

}  // namespace

TEST_F(ProductionTest, WhatLiesWithinTheProductionAndItsTrash) {
    using namespace host;
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north/a"));
    EXPECT_EQ(GetZuProductionTrashDirectoryPath(), u"");
    EXPECT_FALSE(IsTheZuProductionTrashDirectory(u"") || IsInZuProductionTrash(u"", true));

    mProduction.Open(u"/vol/north");
    for (const char16_t* path : {u"/vol/north/a", u"/vol//south/../north/a/"})
        EXPECT_TRUE(IsWithinCurrentZuProductionFolder(path)) << UTF16to8(path);
    for (const char16_t* path : {u"/vol/north", u"/vol/north/", u"/vol/northern/a", u"/vol/north/../a"})
        EXPECT_FALSE(IsWithinCurrentZuProductionFolder(path)) << UTF16to8(path);

    const UTF16String trash = GetZuProductionTrashDirectoryPath();
    EXPECT_EQ(trash, u"/vol/north/" + GetZuProductionTrashDirectoryDisplayName());
    EXPECT_TRUE(IsTheZuProductionTrashDirectory(trash + u"/"));
    EXPECT_FALSE(IsTheZuProductionTrashDirectory(trash + u"/a"));
    EXPECT_TRUE(IsInZuProductionTrash(trash + u"/a/b", false) && IsInZuProductionTrash(trash, true));
    for (const char16_t* rest : {u"", u" 2/a", u"/../a"})
        EXPECT_FALSE(IsInZuProductionTrash(trash + rest, false)) << UTF16to8(rest);

    mProduction.Open(u"/");
    EXPECT_TRUE(IsWithinCurrentZuProductionFolder(u"/a") && !IsWithinCurrentZuProductionFolder(u"//"));
}

TEST_F(ProductionTest, APathLiesWithinAFolderByWholeComponents) {
    using host::Utilities::IsPathWithinDirectory;
    EXPECT_TRUE(IsPathWithinDirectory(u"/p/a/b", u"/p", false) && IsPathWithinDirectory(u"/p", u"/", false));
    EXPECT_TRUE(IsPathWithinDirectory(u"/p", u"/p", true) && !IsPathWithinDirectory(u"/p", u"/p", false));
    EXPECT_FALSE(IsPathWithinDirectory(u"/pq", u"/p", true) || IsPathWithinDirectory(u"/p", u"", true));
}
