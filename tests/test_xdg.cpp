// The file association on the Linux desktop: the test for an earlier
// registration, the three files and the update tools. That the tool maps
// every picture to its type is checked on the installed package
// (tests/desktop), which the same code writes.
#include <sys/stat.h>

#include <regex>

#include "options/association.h"
#include "platform/xdg_association.h"
#include "support.h"

using namespace velmoric;

namespace {

namespace fs = std::filesystem;

const std::string kEntry = "org.velmoric.Velmoric.desktop";

// A desktop of its own in a temporary folder: user data, two system data
// folders and the user's configuration.
struct XdgTest : ::testing::Test {
    vtest::TempDir dir;
    const xdg::Folders folders{dir.file("data"), {dir.file("sys1"), dir.file("sys2")}, dir.file("config")};
    // A folder with characters that the desktop's Exec rules quote, escape and double.
    const Association association = buildAssociation("/opt/a b$%");

    void put(const std::string& relative, const std::string& text) {
        fs::create_directories(fs::path(dir.file(relative)).parent_path());
        vtest::writeFile(dir.file(relative), vtest::Bytes(text.begin(), text.end()));
    }
    std::string text(const std::string& relative) { return vtest::readText(dir.file(relative)); }
};

// ---- The first-run test ----------------------------------------------------

TEST_F(XdgTest, AnyProgramsGlobInAnyDatabaseOrTheUsersOwnPackageCounts) {
    const struct { const char *file, *text; bool known; } cases[] = {
        {"data/mime/globs2", "50:image/x-other:*.spu\n", true},
        {"sys2/mime/globs2", "# comment\n50:application/x-spectrum:*.spu\n", true},
        {"sys1/mime/globs2", "50:image/x-other:*.SPU:cs\n", true},
        {"data/mime/globs2", "50:a/b:*.spux\n50:a/b:*.sp\n#50:a/b:*.spu\n50:*.spu\n50:a/b:x*.spu\n", false},
        {"sys1/mime/globs2", "50:image/x-other:*.neo\n80:text/x-foo:*.spu", true},
        // Without update-mime-database nothing compiles the user's package
        // into a globs2; a system package counts only through its globs2.
        {"data/mime/packages/velmoric.xml", "<glob pattern=\"*.SPU\" weight=\"60\"/>", true},
        {"data/mime/packages/other.xml", "<glob pattern=\"*.spux\"/>", false},
        {"sys1/mime/packages/velmoric.xml", "<glob pattern=\"*.spu\"/>", false}};
    for (const auto& c : cases) {
        put(c.file, c.text);
        EXPECT_EQ(xdg::globKnownIn(folders, "spu"), c.known) << c.file << ": " << c.text;
        fs::remove(dir.file(c.file));
    }
    // A pipe in a database's place is passed over, not waited on.
    for (const char* file : {"data/mime/globs2", "data/mime/packages/velmoric.xml"})
        ASSERT_EQ(::mkfifo(dir.file(file).c_str(), 0600), 0) << file;
    EXPECT_FALSE(xdg::globKnownIn(folders, "spu"));
}

// ---- The three files ---------------------------------------------------------

TEST_F(XdgTest, WritesThePackageTheEntryAndTheDefaultsThroughALinkedList) {
    put("dotfiles/mimeapps.list", "[Default Applications]\ntext/plain=gedit.desktop;\n");
    fs::create_directories(folders.configHome);
    fs::create_symlink(dir.file("dotfiles/mimeapps.list"), dir.file("config/mimeapps.list"));
    xdg::writeAssociationFiles(folders, association);

    const std::string xml = text("data/mime/packages/velmoric.xml");
    const std::string entry = text("data/applications/" + kEntry), apps = text("dotfiles/mimeapps.list");
    std::string types = "MimeType=";
    for (const auto& t : association.types) {
        const auto from = xml.find("<mime-type type=\"" + t.mimeType + "\">");
        ASSERT_NE(from, std::string::npos) << t.mimeType;
        const std::string block = xml.substr(from, xml.find("</mime-type>", from) - from);
        for (const auto& part : {"<comment>" + t.comment + "</comment>", "pattern=\"*." + t.extension + "\"",
                                 "pattern=\"*." + std::string(findFormat(t.extension)->upper) + "\""})
            EXPECT_NE(block.find(part), std::string::npos) << t.mimeType << " lacks " << part;
        EXPECT_NE(apps.find("\n" + t.mimeType + "=" + kEntry + ";\n"), std::string::npos) << t.mimeType;
        types += t.mimeType + ";";
    }
    EXPECT_NE(xml.find("<comment>Neochrome picture</comment>"), std::string::npos);
    for (const auto& line : std::vector<std::string>{"Exec=\"/opt/a b\\\\$%%/velmoric\" %f",
                                                     "Comment=Velmoric file", "Terminal=false", types})
        EXPECT_NE(entry.find("\n" + line + "\n"), std::string::npos) << line;

    EXPECT_TRUE(fs::is_symlink(dir.file("config/mimeapps.list")));
    EXPECT_TRUE(apps.starts_with("[Default Applications]\ntext/plain=gedit.desktop;\n")) << apps;
    EXPECT_NE(apps.find(";\n\n[Added Associations]\n"), std::string::npos) << apps;
    for (const char* folder : {"config", "dotfiles", "data/applications", "data/mime/packages"})
        EXPECT_EQ(vtest::entryCount(dir.file(folder)), 1) << "a temporary in " << folder;
    EXPECT_TRUE(xdg::globKnownIn(folders, "spu")) << "the package alone answers the first-run test";
    // The update tools, where installed, compile the user's MIME database.
    xdg::runUpdateTools(folders);
    EXPECT_EQ(fs::exists(dir.file("data/mime/globs2")), !xdg::findOnPath("update-mime-database").empty());
}

TEST(XdgMimeApps, OurLinesJoinTheirGroupsAndEveryOtherLineStays) {
    Association a;
    a.types = {{"a", "image/x-a", "", {}}, {"b", "image/x-b", "", {}}};
    // "@" stands for the viewer's desktop entry.
    const auto ours = [](const char* text) { return std::regex_replace(text, std::regex("@"), kEntry); };
    // Each group on a line or two.
    const std::string before = ours(
        "[Default Applications]\ntext/plain=gedit.desktop;\nimage/x-b=certs.desktop;\nimage/x-b=again.desktop;\n\n"
        "[Added Associations]\nimage/png=gimp.desktop;\nimage/x-a = other.desktop;@;more.desktop\n\n"
        "[Removed Associations]\nimage/x-a=old.desktop;\n");
    EXPECT_EQ(xdg::mergedMimeApps(before, a),
              ours("[Default Applications]\ntext/plain=gedit.desktop;\nimage/x-b=@;\nimage/x-a=@;\n\n"
                   "[Added Associations]\nimage/png=gimp.desktop;\nimage/x-a=@;other.desktop;more.desktop;\n"
                   "image/x-b=@;\n\n"
                   "[Removed Associations]\nimage/x-a=old.desktop;\n"));
}

}  // namespace
