#include <elf.h>

#include <cstring>

#include "desk/framework/PanelRegistry.h"
#include "desk/framework/PluginLoader.h"
#include "host/framework/Handler.h"
#include "host/framework/PluginEntry.h"
#include "host/framework/WindowRegistry.h"
#include "tests/support/HostFixture.h"

namespace {

/// A library as far as its headers and notes go, as it stands in the file.
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
        mSegment.p_offset = offsetof(ElfFile, mForeign);
        mSegment.p_filesz = kSize - mSegment.p_offset;
    }
    std::string Bytes() const { return {reinterpret_cast<const char*>(this), kSize}; }

    static const std::size_t kSize;
    Elf64_Ehdr mHeader{};
    Elf64_Phdr mSegment{};
    /// A note of uneven size that stands before ours.
    Elf64_Nhdr mForeign{sizeof "GNU", 3, NT_GNU_BUILD_ID};
    char mForeignText[8] = "GNU\0abc";
    host::PluginNote mRecord{sizeof(host::kPluginNoteOwner),
                             sizeof(host::PluginNote) - 20,
                             host::kPluginNoteType,
                             "ZuHost",
                             host::kSdkVersion,
                             "Test Panel"};
};
const std::size_t ElfFile::kSize = offsetof(ElfFile, mRecord) + sizeof mRecord;

class PluginTest : public HostFixture {
protected:
    desk::PluginFile Inspect(const std::string& bytes) {
        return desk::InspectPlugin(mFolder.Write("panel.so", bytes));
    }
};

TEST_F(PluginTest, ReadsTheEntryRecordBehindOtherNotesAndRefusesByReasonWhatIsNotOurs) {
    EXPECT_EQ(Inspect(ElfFile().Bytes()).mName, "Test Panel");
    const std::pair<void (*)(ElfFile&), const char*> refusals[] = {
        {[](ElfFile&) {}, ""},
        {[](ElfFile& f) { std::memset(f.mRecord.mName, 'x', sizeof f.mRecord.mName); }, ""},
        {[](ElfFile& f) { f.mRecord.mSdkVersion = 2; }, "was made for SDK version 2; this program's is 1"},
        {[](ElfFile& f) { f.mRecord.mSdkVersion = 0; }, "was made for SDK version 0; this program's is 1"},
        {[](ElfFile& f) { f.mSegment.p_filesz = 20; }, "has no entry record"},
        {[](ElfFile& f) { f.mRecord.mOwner[0] = 'X'; }, "has no entry record"},
        {[](ElfFile& f) { f.mHeader.e_ident[EI_CLASS] = ELFCLASS32; },
         "is no library (it is for another kind of machine)"},
        {[](ElfFile& f) { f.mHeader.e_type = ET_EXEC; }, "is no library (it is an ELF file of another type)"}};
    for (const auto& [change, refusal] : refusals) {
        ElfFile file;
        change(file);
        EXPECT_EQ(Inspect(file.Bytes()).mRefusal, refusal);
    }
    ASSERT_EQ(mkfifo(mFolder.Path("pipe.so").c_str(), 0600), 0);
    EXPECT_EQ(desk::InspectPlugin(mFolder.Path("pipe.so")).mRefusal, "is no library (it is no regular file)");
    EXPECT_EQ(desk::InspectPlugin(mFolder.Path("none.so")).mRefusal,
              "could not be read: No such file or directory");
}

TEST_F(PluginTest, NoCutAndNoWrongSizeLeadsOutOfTheFile) {
    const std::string whole = ElfFile().Bytes();
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NE(Inspect(whole.substr(0, size)).mRefusal, "") << size;
    constexpr void (*kChanges[])(ElfFile&) = {
        [](ElfFile& f) { f.mHeader.e_phoff = ~0ULL; },
        [](ElfFile& f) { f.mHeader.e_phnum = 0xFFFF; },
        [](ElfFile& f) { f.mHeader.e_shoff = ~0ULL; },
        [](ElfFile& f) { f.mHeader.e_shnum = f.mHeader.e_shentsize = 0xFFFF; },
        [](ElfFile& f) { f.mSegment.p_filesz = ~0ULL; },
        [](ElfFile& f) { f.mSegment.p_offset = ~0ULL - 8; },
        [](ElfFile& f) { f.mForeign.n_namesz = 0xFFFFFFFF; },
        [](ElfFile& f) { f.mRecord.mDescriptionSize = 0x7FFFFFFF; }};
    for (std::size_t i = 0; i < std::size(kChanges); ++i) {
        ElfFile file;
        kChanges[i](file);
        EXPECT_NE(Inspect(file.Bytes()).mRefusal, "") << "change " << i;
    }
}

TEST_F(PluginTest, OfOneFileNameTheFirstGoodOneCountsAndEveryRefusalIsLoggedByName) {
    for (const char* name : {"old/panel.so", "old/readme.txt"}) mFolder.Write(name, "no library");
    for (const char* name : {"good/panel.so", "again/panel.so"}) mFolder.Write(name, ElfFile().Bytes());
    const auto path = [this](const char* name) { return mFolder.Path(name); };
    auto plugins = desk::FindPlugins({path("none"), path("old"), path("old"), path("good"), path("again")});
    ASSERT_EQ(plugins.size(), 2u);
    EXPECT_EQ(plugins[0].mPath, path("old/panel.so"));
    EXPECT_EQ(plugins[1].mPath, path("good/panel.so"));
    // Our hand-made library passes the judgement, but the system cannot load it.
    const ExpectLogged old("\"panel.so\" in \"" + path("old") + "\" is no library");
    const ExpectLogged unloadable("\"panel.so\" in \"" + path("good") + "\" could not be loaded: ");
    desk::LoadPlugins(plugins);
}

TEST_F(PluginTest, AHandlerThatCannotBeMadeOrRegisterIsLogged) {
    host::Handler::RegisterFactory(u"test.failing", [](const host::UTF16String&) -> host::Handler* {
        throw std::runtime_error("cannot be made");
    });
    EXPECT_EQ(desk::PanelRegistry::Instance().FindOrCreateHandler(u"test.nobody"), nullptr);
    const ExpectLogged log("cannot be made"), noClass("test.type");
    EXPECT_EQ(desk::PanelRegistry::Instance().FindOrCreateHandler(u"test.failing"), nullptr);
    host::AddWindow(u"test.type", u"other", u"Title", u"context");
}

}  // namespace
