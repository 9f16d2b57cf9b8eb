#include <gtest/gtest.h>


#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/project/ProductionItems.h"
#include "tests/volume/Stack.h"

using namespace HandlerSharedProjects;

namespace {

long CountDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

}  // namespace

TEST(Descriptors, AreAllGivenBack) {
    constexpr int kProjects = 1000;
    Stack stack;
    host::UTF16StringVec projects;
    for (int i = 0; i < kProjects; ++i) {
        const std::string name = "Scene " + std::to_string(i) + ".zuproj";
        std::ofstream(stack.Path(name)) << "project " << i << '\n';
        projects.push_back(stack.PathUTF16(name));
    }
    std::filesystem::create_directory(stack.Path("Reels"));
    const long before = CountDescriptors();
    const host::UTF16String folder = host::UTF8to16(stack.mProduction);
    stack.mStore->RequestListing(folder, [](const desk::FolderStore::Delivery&) {});
    stack.Settle();
    for (const host::UTF16String& project : projects) ASSERT_TRUE(stack.mDocuments->OpenProject(project));
    EXPECT_EQ(host::OpenProjectCount(), kProjects);
    EXPECT_LT(CountDescriptors(), before + 20) << "an open project keeps no descriptor";
    EXPECT_TRUE(stack.mDocuments->CloseAllProjects());
    projects.resize(50);
    EXPECT_TRUE(Utils::CopyFiles(projects, stack.PathUTF16("Reels"), false, false));
    host::AddProjectsToZuProduction(projects, stack.PathUTF16("Reels"));
    stack.Settle();
    Utils::MoveToSharedProjectsTrash(projects, false, true);
    stack.mStore->Forget(folder);
    stack.Settle();
    EXPECT_EQ(CountDescriptors(), before);
}
