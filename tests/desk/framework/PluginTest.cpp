#include <elf.h>
#include <sys/stat.h>

#include <cstring>

#include "desk/framework/PanelRegistry.h"
#include "desk/framework/PluginLoader.h"
#include "host/framework/Module.h"
#include "host/framework/PluginEntry.h"
#include "host/framework/WindowRegistry.h"
#include "tests/desk/framework/FrameworkFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// A library as far as its headers and notes go, made by hand.
struct ElfFile {
    ElfFile() {
        std::memcpy(mHeader.e_ident, ELFMAG, SELFMAG);
        mHeader.e_ident[EI_CLASS] = ELFCLASS64;
        mHeader.e_ident[EI_DATA] = ELFDATA2LSB;
        mHeader.e_type = ET_DYN;
        mHeader.e_phoff = sizeof mHeader;
        mHeader.e_phentsize = sizeof mSegment;
        mHeader.e_phnum = 1;
        mSegment.p_type = PT_NOTE;
        mSegment.p_align = 4;
        mSegment.p_offset = sizeof mHeader + sizeof mSegment;
        // A foreign note of uneven size stands before ours.
        mForeign = {sizeof "GNU", 3, NT_GNU_BUILD_ID};
    }

    std::string Bytes() const {
        Elf64_Phdr segment = mSegment;
        std::string notes(reinterpret_cast<const char*>(&mForeign), sizeof mForeign);
        notes += std::string("GNU\0abc\0", 8);
        if (mHasRecord) notes.append(reinterpret_cast<const char*>(&mRecord), sizeof mRecord);
        if (!segment.p_filesz) segment.p_filesz = notes.size();
        return std::string(reinterpret_cast<const char*>(&mHeader), sizeof mHeader) +
               std::string(reinterpret_cast<const char*>(&segment), sizeof segment) + notes;
    }

    Elf64_Ehdr mHeader{};
    Elf64_Phdr mSegment{};
    Elf64_Nhdr mForeign{};
    bool mHasRecord = true;
    host::PluginNote mRecord{sizeof(host::kPluginNoteOwner),
                             sizeof(host::PluginNote) - 20,
                             host::kPluginNoteType,
                             "ZuHost",
                             host::kSdkVersion,
                             "Test Panel"};
};

class PluginTest : public FrameworkFixture {
protected:
    std::string Refusal(const std::string& bytes) {
        return desk::InspectPlugin(mFolder.Write("panel.so", bytes)).mRefusal;
    }
    TemporaryFolder mFolder;
};

TEST_F(PluginTest, ReadsTheEntryRecordBehindOtherNotes) {
    const desk::PluginFile plugin = desk::InspectPlugin(mFolder.Write("panel.so", ElfFile().Bytes()));
    EXPECT_EQ(plugin.mRefusal, "");
    EXPECT_EQ(plugin.mName, "Test Panel");
    EXPECT_EQ(plugin.mSdkVersion, host::kSdkVersion);
    ElfFile unterminated;
    std::memset(unterminated.mRecord.mName, 'x', sizeof unterminated.mRecord.mName);
    EXPECT_EQ(desk::InspectPlugin(mFolder.Write("panel.so", unterminated.Bytes())).mName, std::string(60, 'x'));
}

TEST_F(PluginTest, RefusesByReasonWhatIsNotOurs) {
    ElfFile version;
    version.mRecord.mSdkVersion = 2;
    EXPECT_EQ(Refusal(version.Bytes()), "was made for SDK version 2; this program's is 1");
    ElfFile none;
    none.mHasRecord = false;
    EXPECT_EQ(Refusal(none.Bytes()), "has no entry record");
    ElfFile owner;
    owner.mRecord.mOwner[0] = 'X';
    EXPECT_EQ(Refusal(owner.Bytes()), "has no entry record");
    EXPECT_EQ(Refusal("just a text that someone called a library"), "is no library (it is no ELF file)");
    EXPECT_EQ(Refusal(""), "is no library (it is no ELF file)");
    ElfFile small;
    small.mHeader.e_ident[EI_CLASS] = ELFCLASS32;
    EXPECT_EQ(Refusal(small.Bytes()), "is no library (it is for another kind of machine)");
    ElfFile program;
    program.mHeader.e_type = ET_EXEC;
    EXPECT_EQ(Refusal(program.Bytes()), "is no library (it is an ELF file of another type)");
}

TEST_F(PluginTest, NoCutAndNoWrongSizeLeadsOutOfTheFile) {
    const std::string whole = ElfFile().Bytes();
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NE(Refusal(whole.substr(0, size)), "") << size;
    const auto damage = [this](auto change) {
        ElfFile file;
        change(file);
        return Refusal(file.Bytes());
    };
    EXPECT_NE(damage([](ElfFile& f) { f.mHeader.e_phoff = ~0ULL; }), "");
    EXPECT_NE(damage([](ElfFile& f) { f.mHeader.e_phnum = 0xFFFF; }), "");
    EXPECT_NE(damage([](ElfFile& f) { f.mHeader.e_phentsize = 1; }), "");
    EXPECT_NE(damage([](ElfFile& f) { f.mSegment.p_filesz = ~0ULL; }), "");
    EXPECT_NE(damage([](ElfFile& f) { f.mSegment.p_offset = ~0ULL - 8; }), "");
    EXPECT_NE(damage([](ElfFile& f) { f.mForeign.n_namesz = 0xFFFFFFFF; }), "");
    EXPECT_NE(damage([](ElfFile& f) { f.mForeign.n_descsz = 0xFFFFFFF0; }), "");
    EXPECT_NE(damage([](ElfFile& f) { f.mRecord.mDescriptionSize = 0x7FFFFFFF; }), "");
}

TEST_F(PluginTest, AnswersAtOnceForWhatIsNoRegularFileOrNotThere) {
    ASSERT_EQ(mkfifo(mFolder.Path("pipe.so").c_str(), 0600), 0);
    EXPECT_EQ(desk::InspectPlugin(mFolder.Path("pipe.so")).mRefusal, "is no library (it is no regular file)");
    EXPECT_EQ(desk::InspectPlugin(mFolder.MakeFolder("folder.so")).mRefusal,
              "is no library (it is no regular file)");
    EXPECT_EQ(desk::InspectPlugin(mFolder.Path("none.so")).mRefusal,
              "could not be read: No such file or directory");
}

TEST_F(PluginTest, OfOneFileNameTheFirstFolderCountsAndEveryRefusalIsLoggedByName) {
    const std::string good = ElfFile().Bytes();
    mFolder.Write("first/panel.so", good);
    mFolder.Write("second/panel.so", "another");
    mFolder.Write("second/text.so", "no library");
    mFolder.Write("second/readme.txt", "not listed");
    auto plugins = desk::FindPlugins({mFolder.Path("none"), mFolder.Path("first"), mFolder.Path("second")});
    ASSERT_EQ(plugins.size(), 2u);
    EXPECT_EQ(plugins[0].mPath, mFolder.Path("first/panel.so"));
    EXPECT_EQ(plugins[0].mRefusal, "");
    EXPECT_EQ(plugins[1].mPath, mFolder.Path("second/text.so"));
    // Our hand-made library passes the judgement, but the system cannot load it.
    const ExpectLogged unloadable("\"panel.so\"");
    const ExpectLogged text("\"text.so\" in \"" + mFolder.Path("second") + "\" is no library");
    desk::LoadPlugins(plugins);
    EXPECT_TRUE(plugins[0].mRefusal.starts_with("could not be loaded: ")) << plugins[0].mRefusal;
}

Events sHandlerEvents;

host::Handler* MakeHandler(const host::UTF16String&) {
    sHandlerEvents.push_back("made");
    return new NotingHandler(u"test.made", sHandlerEvents);
}

TEST_F(PluginTest, AHandlerIsMadeWhenWantedAndDestroyedWithItsViews) {
    desk::PanelRegistry& registry = desk::PanelRegistry::Instance();
    host::Handler::RegisterFactory(u"test.made", &MakeHandler);
    host::Handler::RegisterFactory(u"test.failing", [](const host::UTF16String&) -> host::Handler* {
        throw std::runtime_error("cannot be made");
    });
    EXPECT_EQ(host::Handler::FindHandler(u"test.made"), nullptr);
    host::Handler* handler = registry.FindOrCreateHandler(u"test.made");
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(registry.FindOrCreateHandler(u"test.made"), handler);
    host::TabView::Create(mPanel.get(), u"test.made", u"", mFrame.get(), true);
    registry.DestroyHandler(handler->GetHandlerID());
    EXPECT_EQ(mEvents.back(), "panel destroyed");
    EXPECT_EQ(host::Handler::FindHandler(u"test.made"), nullptr);
    EXPECT_EQ(sHandlerEvents, (Events{"made"}));

    EXPECT_EQ(registry.FindOrCreateHandler(u"test.nobody"), nullptr);
    const ExpectLogged log("cannot be made");
    EXPECT_EQ(registry.FindOrCreateHandler(u"test.failing"), nullptr);
}

TEST_F(PluginTest, AnEntryOfTheWindowMenuOutlivesItsWindowClassAndStandsOnce) {
    const auto count = [] {
        const auto& entries = desk::PanelRegistry::Instance().GetWindowEntries();
        return std::count_if(entries.begin(), entries.end(), [](const auto& entry) {
            return entry.mHandlerID == u"test.window" && entry.mTitle == u"Title";
        });
    };
    for (int i = 0; i < 2; ++i) {
        host::AddWindowClass(u"test.type", u"test.window", true);
        host::AddWindow(u"test.type", u"window", u"Title", u"context");
        host::RemoveWindowClass(u"test.type");
        EXPECT_EQ(count(), 1);
    }
    const ExpectLogged log("test.type");
    host::AddWindow(u"test.type", u"other", u"Title", u"context");
}

}  // namespace
