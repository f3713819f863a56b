// The file association on the Linux desktop: the test for an earlier
// registration, the three files, and their agreement with the table of formats.
#include <cstdlib>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>

#include "options/association.h"
#include "platform/xdg_association.h"
#include "shell/formats.h"
#include "support.h"

using namespace velmoric;

namespace {

namespace fs = std::filesystem;

// Sets an environment variable for the length of a test.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        if (value)
            ::setenv(name, value->c_str(), 1);
        else
            ::unsetenv(name);
    }
    ~ScopedEnv() {
        if (old_)
            ::setenv(name_.c_str(), old_->c_str(), 1);
        else
            ::unsetenv(name_.c_str());
    }

private:
    std::string name_;
    std::optional<std::string> old_;
};

// A desktop of its own in a temporary folder: user data, two system data
// folders and the user's configuration.
class XdgFolders {
public:
    XdgFolders()
        : dataHome_("XDG_DATA_HOME", dir.file("data")),
          dataDirs_("XDG_DATA_DIRS", dir.file("sys1") + ":" + dir.file("sys2")),
          configHome_("XDG_CONFIG_HOME", dir.file("config")) {
        for (const char* f : {"data", "sys1", "sys2", "config"}) fs::create_directories(dir.path() / f);
    }
    std::string path(const std::string& relative) const { return dir.file(relative); }
    void put(const std::string& relative, const std::string& text) const {
        fs::create_directories(fs::path(path(relative)).parent_path());
        vtest::writeFile(path(relative), vtest::Bytes(text.begin(), text.end()));
    }
    std::string text(const std::string& relative) const {
        const auto b = vtest::readFile(path(relative));
        return std::string(b.begin(), b.end());
    }

    vtest::TempDir dir;

private:
    ScopedEnv dataHome_, dataDirs_, configHome_;
};

const std::string kFolder = "/opt/velmoric";

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

// The value of "key=" in a desktop entry, or nullopt.
std::optional<std::string> entryValue(const std::string& text, const std::string& key) {
    for (const auto& line : linesOf(text))
        if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1);
    return std::nullopt;
}

// type -> globs of the MIME package.
std::map<std::string, std::set<std::string>> globsByType(const std::string& xml) {
    std::map<std::string, std::set<std::string>> out;
    const std::regex typeRe(R"(<mime-type type="([^"]+)\">)"), globRe(R"(<glob pattern="([^"]+)\")");
    std::string current;
    for (const auto& line : linesOf(xml)) {
        std::smatch m;
        if (std::regex_search(line, m, typeRe)) current = m[1], out[current];
        if (std::regex_search(line, m, globRe)) out[current].insert(m[1]);
    }
    return out;
}

// The lines of one group of an ini text.
std::vector<std::string> groupLines(const std::string& text, const std::string& group) {
    std::vector<std::string> out;
    bool in = false;
    for (const auto& line : linesOf(text)) {
        if (!line.empty() && line[0] == '[') {
            in = line == "[" + group + "]";
            continue;
        }
        if (in && !line.empty()) out.push_back(line);
    }
    return out;
}

// ---- The first-run test ----------------------------------------------------

TEST(XdgGlob, AnyProgramsGlobInAnyDataFolderCounts) {
    struct Case {
        const char* folder;
        const char* globs2;
        bool known;
    };
    const Case cases[] = {
        {"data", "50:image/x-other:*.spu\n", true},
        {"sys2", "# comment\n50:application/x-spectrum:*.spu\n", true},
        {"sys1", "50:image/x-other:*.SPU:cs\n", true},
        {"data", "50:image/x-other:*.spux\n", false},
        {"data", "50:image/x-other:*.sp\n", false},
        {"data", "#50:image/x-other:*.spu\n", false},
        {"data", "50:*.spu\n", false},
        {"data", "50:image/x-other:x*.spu\n", false},
        {"sys1", "50:image/x-other:*.neo\n80:text/x-foo:*.spu", true},
    };
    for (const Case& c : cases) {
        XdgFolders x;
        x.put(std::string(c.folder) + "/mime/globs2", c.globs2);
        EXPECT_EQ(xdg::globKnown("spu"), c.known) << c.folder << ": " << c.globs2;
    }
}

TEST(XdgGlob, TheUsersOwnPackageCountsWhereNoToolCompiledIt) {
    XdgFolders x;
    x.put("data/mime/packages/other.xml", "<mime-type type=\"a/b\"><glob pattern=\"*.spux\"/></mime-type>");
    x.put("sys1/mime/packages/velmoric.xml", "<glob pattern=\"*.spu\"/>");  // a system package counts through its globs2
    EXPECT_FALSE(xdg::globKnown("spu"));
    xdg::writeAssociationFiles(xdg::foldersFromEnvironment(), buildAssociation(kFolder));
    EXPECT_FALSE(fs::exists(x.path("data/mime/globs2")));
    EXPECT_TRUE(xdg::globKnown("spu"));
    EXPECT_TRUE(xdg::globKnown("SPU"));
    EXPECT_FALSE(xdg::globKnown("png"));
}

// ---- The three files ---------------------------------------------------------

TEST(XdgWrite, WritesThePackageTheEntryAndTheDefaults) {
    XdgFolders x;
    const Association a = buildAssociation(kFolder);
    xdg::writeAssociationFiles(xdg::foldersFromEnvironment(), a);

    const auto globs = globsByType(x.text("data/mime/packages/velmoric.xml"));
    ASSERT_EQ(globs.size(), 18u);
    for (const auto& t : a.types) {
        std::string upper = t.extension;
        for (char& ch : upper) ch = char(std::toupper(static_cast<unsigned char>(ch)));
        EXPECT_EQ(globs.at(t.mimeType), (std::set<std::string>{"*." + t.extension, "*." + upper}));
    }
    const std::string xml = x.text("data/mime/packages/velmoric.xml");
    for (const auto& t : a.types) EXPECT_NE(xml.find("<comment>" + t.comment + "</comment>"), std::string::npos) << t.comment;
    EXPECT_NE(xml.find("<comment>Neochrome picture</comment>"), std::string::npos);

    const std::string entry = x.text("data/applications/org.velmoric.Velmoric.desktop");
    EXPECT_EQ(linesOf(entry).front(), "[Desktop Entry]");
    EXPECT_EQ(entryValue(entry, "Type"), "Application");
    EXPECT_EQ(entryValue(entry, "Exec"), kFolder + "/velmoric %f");
    EXPECT_EQ(entryValue(entry, "Comment"), "Velmoric file");
    EXPECT_EQ(entryValue(entry, "Terminal"), "false");
    std::string types;
    for (const auto& t : a.types) types += t.mimeType + ";";
    EXPECT_EQ(entryValue(entry, "MimeType"), types);

    const std::string apps = x.text("config/mimeapps.list");
    const auto defaults = groupLines(apps, "Default Applications");
    ASSERT_EQ(defaults.size(), 18u);
    for (std::size_t i = 0; i < 18; ++i) EXPECT_EQ(defaults[i], a.types[i].mimeType + "=org.velmoric.Velmoric.desktop;");
}

TEST(XdgWrite, KeepsEveryOtherLineOfTheUsersList) {
    XdgFolders x;
    const std::string before =
        "# my own notes\n"
        "[Default Applications]\n"
        "text/plain=gedit.desktop;\n"
        "image/x-spectrum512-spc=certs.desktop;\n"
        "\n"
        "[Added Associations]\n"
        "image/png=gimp.desktop;\n"
        "image/x-neochrome = other.desktop;org.velmoric.Velmoric.desktop;more.desktop\n"
        "\n"
        "[Removed Associations]\n"
        "image/x-macpaint=old.desktop;\n";
    x.put("config/mimeapps.list", before);
    xdg::writeAssociationFiles(xdg::foldersFromEnvironment(), buildAssociation(kFolder));
    const std::string after = x.text("config/mimeapps.list");

    const auto lines = linesOf(after);
    EXPECT_EQ(lines[0], "# my own notes");
    EXPECT_EQ(lines[1], "[Default Applications]");
    EXPECT_EQ(lines[2], "text/plain=gedit.desktop;");
    EXPECT_EQ(lines[3], "image/x-spectrum512-spc=org.velmoric.Velmoric.desktop;");  // taken over where it stood
    const auto defaults = groupLines(after, "Default Applications");
    EXPECT_EQ(defaults.size(), 19u);
    const auto added = groupLines(after, "Added Associations");
    EXPECT_EQ(added.size(), 19u);
    EXPECT_EQ(added[0], "image/png=gimp.desktop;");
    EXPECT_EQ(added[1], "image/x-neochrome=org.velmoric.Velmoric.desktop;other.desktop;more.desktop;");
    EXPECT_EQ(groupLines(after, "Removed Associations"),
              (std::vector<std::string>{"image/x-macpaint=old.desktop;"}));
    // Each group stays one block, separated by its blank line.
    EXPECT_NE(after.find("image/x-macpaint=org.velmoric.Velmoric.desktop;\n\n[Added Associations]"), std::string::npos);
}

TEST(XdgWrite, ALinkedListIsWrittenThroughAndNoTemporaryStays) {
    XdgFolders x;
    x.put("dotfiles/mimeapps.list", "[Default Applications]\n");
    fs::create_symlink(x.path("dotfiles/mimeapps.list"), x.path("config/mimeapps.list"));
    xdg::writeAssociationFiles(xdg::foldersFromEnvironment(), buildAssociation(kFolder));
    EXPECT_TRUE(fs::is_symlink(x.path("config/mimeapps.list")));
    EXPECT_EQ(groupLines(x.text("dotfiles/mimeapps.list"), "Default Applications").size(), 18u);
    for (const char* folder : {"config", "dotfiles", "data/applications", "data/mime/packages"})
        for (const auto& e : fs::directory_iterator(x.path(folder)))
            EXPECT_NE(e.path().filename().string().front(), '.') << e.path();
}

TEST(XdgWrite, ExecQuotesWhatTheDesktopWouldSplit) {
    struct Case {
        const char* command;
        const char* exec;
    };
    const Case cases[] = {
        {"/opt/velmoric/velmoric %f", "/opt/velmoric/velmoric %f"},
        {"/home/a b/velmoric %f", "\"/home/a b/velmoric\" %f"},
        {"/home/100%/velmoric %f", "/home/100%%/velmoric %f"},
        {"/x/$HOME\"q\"/velmoric %f", "\"/x/\\$HOME\\\"q\\\"/velmoric\" %f"},
        {"/x/a\\b/velmoric %f", "\"/x/a\\\\b/velmoric\" %f"},
    };
    for (const Case& c : cases) EXPECT_EQ(xdg::execValue(c.command), c.exec) << c.command;
    // A backslash doubles once more for the file's own escapes.
    Association a = buildAssociation("/x/a\\b");
    EXPECT_EQ(entryValue(xdg::desktopEntryText(a), "Exec"), "\"/x/a\\\\\\\\b/velmoric\" %f");
}

// ---- With the real update tool ----------------------------------------------------

TEST(XdgWrite, AfterTheToolsTheGlobIsKnown) {
    if (xdg::findOnPath("update-mime-database").empty()) GTEST_SKIP() << "update-mime-database is not installed";
    XdgFolders x;
    EXPECT_FALSE(xdg::globKnown("spu"));
    xdg::writeAssociation(buildAssociation(kFolder));
    EXPECT_TRUE(xdg::globKnown("spu"));
    EXPECT_TRUE(xdg::globKnown("SPC"));
    EXPECT_FALSE(xdg::globKnown("png"));
    const std::string globs2 = x.text("data/mime/globs2");
    EXPECT_NE(globs2.find(":image/x-macpaint:*.mac"), std::string::npos) << globs2;
}

}  // namespace
