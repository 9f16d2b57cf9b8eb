#include <gtest/gtest.h>

#include "desk/project/Production.h"
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
    EXPECT_FALSE(IsTheZuProductionTrashDirectory(u""));
    EXPECT_FALSE(IsInZuProductionTrash(u"", true));

    mProduction.Open(u"/vol/north");
    EXPECT_TRUE(IsWithinCurrentZuProductionFolder(u"/vol/north/a"));
    EXPECT_TRUE(IsWithinCurrentZuProductionFolder(u"/vol//south/../north/a/"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north/"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/northern/a"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north/../a"));

    const UTF16String trash = u"/vol/north/" + GetZuProductionTrashDirectoryDisplayName();
    EXPECT_EQ(GetZuProductionTrashDirectoryPath(), trash);
    EXPECT_TRUE(IsTheZuProductionTrashDirectory(trash + u"/"));
    EXPECT_FALSE(IsTheZuProductionTrashDirectory(trash + u"/a"));
    EXPECT_TRUE(IsInZuProductionTrash(trash + u"/a/b", false));
    EXPECT_FALSE(IsInZuProductionTrash(trash, false));
    EXPECT_TRUE(IsInZuProductionTrash(trash, true));
    EXPECT_FALSE(IsInZuProductionTrash(trash + u" 2/a", true));
    EXPECT_FALSE(IsInZuProductionTrash(trash + u"/../a", true));

    mProduction.Open(u"/");
    EXPECT_TRUE(IsWithinCurrentZuProductionFolder(u"/a"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"//"));
}
