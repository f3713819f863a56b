#include "platform/xdg_association.h"

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "platform/files.h"

extern char** environ;

namespace velmoric::xdg {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDefaultGroup = "Default Applications";
constexpr std::string_view kAddedGroup = "Added Associations";
constexpr const char* kApplicationName = "Velmoric Picture Viewer";
constexpr const char* kGenericName = "Picture Viewer";
// The class of the window as X11 sees it: the viewer sets no application
// name, so Qt takes the program's file name.
constexpr const char* kWindowClass = "velmoric";
// What file managers show for a type when no thumbnail is there yet.
constexpr const char* kTypeIcon = "image-x-generic";
// Where another type shares an extension (.spc is also a PKCS#7 certificate
// bundle, at the default weight of 50), a type whose files carry a signature
// stays below that weight: the desktop then looks at the bytes, so a file
// with the signature is ours and any other keeps the other program's type.
// A type known by its name alone claims the extension at the default weight.
constexpr int kGlobWeightWithContent = 40;
constexpr int kGlobWeightByName = 50;
// shared-mime-info's default priority for a content match; a type whose
// signature an earlier type has too (Spectrum smooshed after compressed)
// takes a lower one, so that a file without an extension goes to the earlier
// type, as findFormatByContent takes the first row that matches.
constexpr int kMagicPriority = 50;
constexpr int kSharedMagicPriority = 45;

// ---- Text helpers ------------------------------------------------------------

std::string_view trim(std::string_view s) {
    const auto first = s.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    const auto last = s.find_last_not_of(" \t\r");
    return s.substr(first, last - first + 1);
}

std::vector<std::string_view> split(std::string_view s, char by) {
    std::vector<std::string_view> out;
    std::size_t at = 0;
    for (;;) {
        const auto next = s.find(by, at);
        out.push_back(s.substr(at, next == std::string_view::npos ? std::string_view::npos : next - at));
        if (next == std::string_view::npos) return out;
        at = next + 1;
    }
}

char asciiLower(char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; }

std::string asciiUpper(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = char(c - 'a' + 'A');
    return out;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (asciiLower(a[i]) != asciiLower(b[i])) return false;
    return true;
}

std::string xmlEscaped(std::string_view s) {
    std::string out;
    for (char c : s) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

// A match value of shared-mime-info's "string" type: printable ASCII as it
// stands, other bytes as \xNN, and a hex digit behind such an escape escaped
// too, so that it cannot be read as part of it.
std::string magicValue(std::string_view bytes) {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out;
    bool afterEscape = false;
    for (char c : bytes) {
        const auto b = std::uint8_t(c);
        const bool hexDigit = std::isxdigit(b) != 0;
        if (b < 0x20 || b > 0x7e || c == '\\' || (afterEscape && hexDigit)) {
            out += "\\x";
            out += kHex[b >> 4];
            out += kHex[b & 15];
            afterEscape = true;
        } else {
            out += c;
            afterEscape = false;
        }
    }
    return xmlEscaped(out);
}

// The escapes that every string value of a desktop file takes.
std::string desktopEscaped(std::string_view s) {
    std::string out;
    for (char c : s) {
        switch (c) {
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\t': out += "\\t"; break;
            case '\r': out += "\\r"; break;
            default: out += c;
        }
    }
    return out;
}

// One argument of an Exec line, quoted when it holds a reserved character.
std::string execArgument(std::string_view arg) {
    constexpr std::string_view kReserved = " \t\n\"'\\><~|&;$*?#()`";
    std::string out;
    for (char c : arg) {
        if (c == '%') out += '%';  // a literal percent is written twice
        out += c;
    }
    if (out.find_first_of(kReserved) == std::string::npos) return out;
    std::string quoted = "\"";
    for (char c : out) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

std::string typeList(const Association& association) {
    std::string out;
    for (const auto& t : association.types) out += t.mimeType + ";";
    return out;
}

// What a search in a launcher should find the viewer by: the computer and
// the extensions of its pictures.
std::string keywordList(const Association& association) {
    std::string out = "Atari;ST;picture;";
    for (const auto& t : association.types) out += asciiUpper(t.extension) + ";";
    return out;
}

std::string desktopId() { return std::string(kApplicationId) + ".desktop"; }

// ---- Environment -----------------------------------------------------------

// An XDG variable counts only when it holds an absolute path.
std::string absoluteFromEnvironment(const char* name) {
    const char* v = std::getenv(name);
    return (v && v[0] == '/') ? std::string(v) : std::string();
}

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home && *home) return home;
    if (const passwd* pw = ::getpwuid(::getuid()); pw && pw->pw_dir) return pw->pw_dir;
    return "/";
}

// A MIME database file, or nothing when it cannot be read: only a regular
// file (a pipe put in its place would block the start-up) and no larger
// than any real database (Debian's globs2 holds under 100 kilobytes).
std::string readTextQuietly(const std::string& path) {
    constexpr std::size_t kDatabaseFileLimit = 16 << 20;
    try {
        const auto bytes = files::readWhole(path, kDatabaseFileLimit);
        return std::string(bytes.begin(), bytes.end());
    } catch (const PlatformError&) {
        return {};
    }
}

std::string readTextIfPresent(const std::string& path) {
    std::error_code ec;
    if (!fs::exists(path, ec)) return {};
    // A user's mimeapps.list holds a few kilobytes; one far larger is no
    // file to merge into.
    constexpr std::size_t kAssociationFileLimit = 1 << 20;
    const auto bytes = files::readWhole(path, kAssociationFileLimit);
    return std::string(bytes.begin(), bytes.end());
}

// ---- mimeapps.list ---------------------------------------------------------

std::string ourValue(std::string_view group, std::string_view oldValue) {
    const std::string id = desktopId();
    std::string value = id + ";";
    if (group != kAddedGroup) return value;
    // Added associations list every program offered for the type: keep the others behind ours.
    for (std::string_view other : split(oldValue, ';')) {
        other = trim(other);
        if (!other.empty() && other != id) value += std::string(other) + ";";
    }
    return value;
}

bool isOurGroup(std::string_view group) { return group == kDefaultGroup || group == kAddedGroup; }

// Rewrites the lines of mimeapps.list group by group. Our keys are replaced
// where they stand, repeated keys dropped, and missing ones added at the end
// of the first section of each of the two groups.
class MimeAppsMerger {
public:
    explicit MimeAppsMerger(const Association& a) : a_(a) {
        for (const auto& t : a.types) types_.insert(t.mimeType);
    }

    std::string merge(std::string_view existing) {
        if (!existing.empty() && existing.back() == '\n') existing.remove_suffix(1);
        if (!existing.empty())
            for (std::string_view line : split(existing, '\n')) take(line);
        closeSection();
        for (std::string_view group : {kDefaultGroup, kAddedGroup})
            if (!finished_.count(std::string(group))) appendGroup(group);
        std::string out;
        for (const auto& line : lines_) out += line + "\n";
        return out;
    }

private:
    void take(std::string_view line) {
        const std::string_view t = trim(line);
        if (t.size() >= 2 && t.front() == '[' && t.back() == ']') {
            closeSection();
            group_ = std::string(t.substr(1, t.size() - 2));
            sectionStart_ = lines_.size() + 1;
            lines_.emplace_back(line);
            return;
        }
        const auto eq = t.find('=');
        if (!isOurGroup(group_) || t.empty() || t.front() == '#' || eq == std::string_view::npos) {
            lines_.emplace_back(line);
            return;
        }
        const std::string key(trim(t.substr(0, eq)));
        if (!types_.count(key)) {
            lines_.emplace_back(line);
            return;
        }
        auto& seen = seen_[group_];
        if (seen.insert(key).second) lines_.push_back(key + "=" + ourValue(group_, t.substr(eq + 1)));
    }

    // At the end of a section of one of our groups, adds the keys it lacked.
    void closeSection() {
        if (!isOurGroup(group_) || !finished_.insert(group_).second) return;
        std::size_t at = lines_.size();
        while (at > sectionStart_ && trim(lines_[at - 1]).empty()) --at;
        std::vector<std::string> missing;
        for (const auto& t : a_.types)
            if (seen_[group_].insert(t.mimeType).second)
                missing.push_back(t.mimeType + "=" + ourValue(group_, ""));
        lines_.insert(lines_.begin() + std::ptrdiff_t(at), missing.begin(), missing.end());
    }

    void appendGroup(std::string_view group) {
        if (!lines_.empty() && !trim(lines_.back()).empty()) lines_.emplace_back();
        lines_.push_back("[" + std::string(group) + "]");
        for (const auto& t : a_.types) lines_.push_back(t.mimeType + "=" + ourValue(group, ""));
        finished_.insert(std::string(group));
    }

    const Association& a_;
    std::set<std::string> types_;
    std::vector<std::string> lines_;
    std::string group_;
    std::size_t sectionStart_ = 0;
    std::map<std::string, std::set<std::string>> seen_;
    std::set<std::string> finished_;
};

// ---- Files and processes -----------------------------------------------------

std::string resolvedTarget(const std::string& path) {
    std::error_code ec;
    if (!fs::is_symlink(path, ec)) return path;
    const auto target = fs::canonical(path, ec);
    return ec ? path : target.string();
}

void makeFolder(const fs::path& folder) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) throw PlatformError(folder.string(), "cannot create folder: " + ec.message());
}

// Starts a program with its arguments, no shell between, and waits for it.
// Its output goes nowhere and its exit status is not looked at.
void runQuietly(const std::string& program, const std::vector<std::string>& args) {
    std::vector<char*> argv;
    std::vector<std::string> owned = args;
    owned.insert(owned.begin(), program);
    for (auto& a : owned) argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int rc = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return;
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
}

void runIfPresent(const std::string& name, const std::string& folder) {
    const std::string program = findOnPath(name);
    if (!program.empty()) runQuietly(program, {folder});
}

}  // namespace

// ---- Public pieces -------------------------------------------------------------

Folders foldersFromEnvironment() {
    Folders f;
    const std::string home = homeFolder();
    f.dataHome = absoluteFromEnvironment("XDG_DATA_HOME");
    if (f.dataHome.empty()) f.dataHome = (fs::path(home) / ".local/share").string();
    f.configHome = absoluteFromEnvironment("XDG_CONFIG_HOME");
    if (f.configHome.empty()) f.configHome = (fs::path(home) / ".config").string();
    if (const char* dirs = std::getenv("XDG_DATA_DIRS"))
        for (std::string_view d : split(dirs, ':'))
            if (!d.empty() && d.front() == '/') f.dataDirs.emplace_back(d);
    if (f.dataDirs.empty()) f.dataDirs = {"/usr/local/share", "/usr/share"};
    return f;
}

bool globsTextHas(std::string_view globs2, std::string_view extension) {
    const std::string wanted = "*." + std::string(extension);
    for (std::string_view line : split(globs2, '\n')) {
        if (line.empty() || line.front() == '#') continue;
        const auto fields = split(line, ':');
        if (fields.size() >= 3 && equalsIgnoringCase(trim(fields[2]), wanted)) return true;
    }
    return false;
}

bool packageTextHas(std::string_view xml, std::string_view extension) {
    const std::string wanted = "pattern=\"*." + std::string(extension) + "\"";
    for (std::size_t at = 0; (at = xml.find("pattern=\"*.", at)) != std::string_view::npos; ++at)
        if (equalsIgnoringCase(xml.substr(at, wanted.size()), wanted)) return true;
    return false;
}

bool globKnownIn(const Folders& folders, std::string_view extension) {
    std::vector<std::string> roots = {folders.dataHome};
    roots.insert(roots.end(), folders.dataDirs.begin(), folders.dataDirs.end());
    for (const auto& root : roots)
        if (globsTextHas(readTextQuietly((fs::path(root) / "mime/globs2").string()), extension)) return true;
    // Without update-mime-database the user's packages are never compiled
    // into a globs2; the package itself then says that the question was answered.
    std::error_code ec;
    for (auto it = fs::directory_iterator(fs::path(folders.dataHome) / "mime/packages", ec);
         !ec && it != fs::directory_iterator(); it.increment(ec))
        if (it->path().extension() == ".xml" && packageTextHas(readTextQuietly(it->path().string()), extension))
            return true;
    return false;
}

std::string mimePackageText(const Association& association) {
    std::ostringstream out;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n";
    std::set<std::pair<std::uint32_t, std::string>> seen;
    for (const auto& t : association.types) {
        out << "  <mime-type type=\"" << xmlEscaped(t.mimeType) << "\">\n"
            << "    <comment>" << xmlEscaped(t.comment) << "</comment>\n"
            << "    <generic-icon name=\"" << kTypeIcon << "\"/>\n";
        const int weight = t.matches.empty() ? kGlobWeightByName : kGlobWeightWithContent;
        for (const std::string& ext : {t.extension, asciiUpper(t.extension)})
            out << "    <glob pattern=\"*." << xmlEscaped(ext) << "\" weight=\"" << weight << "\"/>\n";
        if (!t.matches.empty()) {
            bool shared = false;
            for (const ContentMatch& m : t.matches) shared |= !seen.insert({m.offset, m.bytes}).second;
            out << "    <magic priority=\"" << (shared ? kSharedMagicPriority : kMagicPriority) << "\">\n";
            for (const ContentMatch& m : t.matches)
                out << "      <match type=\"string\" offset=\"" << m.offset << "\" value=\"" << magicValue(m.bytes)
                    << "\"/>\n";
            out << "    </magic>\n";
        }
        out << "  </mime-type>\n";
    }
    out << "</mime-info>\n";
    return out.str();
}

std::string execValue(const std::string& command) {
    constexpr std::string_view kFileCode = " %f";
    std::string_view program = command;
    const bool withFile = program.size() >= kFileCode.size() && program.ends_with(kFileCode);
    if (withFile) program.remove_suffix(kFileCode.size());
    return execArgument(program) + (withFile ? std::string(kFileCode) : std::string());
}

std::string desktopEntryText(const Association& association) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=" + std::string(kApplicationName) + "\n"
           "GenericName=" + kGenericName + "\n"
           "Comment=" + desktopEscaped(association.comment) + "\n"
           "Exec=" + desktopEscaped(execValue(association.command)) + "\n"
           "Icon=" + kApplicationId + "\n"
           "Terminal=false\n"
           "Categories=Graphics;Viewer;\n"
           "MimeType=" + typeList(association) + "\n"
           "Keywords=" + keywordList(association) + "\n"
           "StartupWMClass=" + kWindowClass + "\n";
}

std::string mergedMimeApps(std::string_view existing, const Association& association) {
    return MimeAppsMerger(association).merge(existing);
}

std::string mimePackagePath(const Folders& folders, const Association& association) {
    return (fs::path(folders.dataHome) / "mime/packages" / (association.className + ".xml")).string();
}

std::string desktopEntryPath(const Folders& folders, const Association&) {
    return (fs::path(folders.dataHome) / "applications" / desktopId()).string();
}

std::string mimeAppsPath(const Folders& folders) { return (fs::path(folders.configHome) / "mimeapps.list").string(); }

void writeAssociationFiles(const Folders& folders, const Association& association) {
    replaceFile(mimePackagePath(folders, association), mimePackageText(association));
    replaceFile(desktopEntryPath(folders, association), desktopEntryText(association));
    const std::string apps = mimeAppsPath(folders);
    replaceFile(apps, mergedMimeApps(readTextIfPresent(apps), association));
}

void runUpdateTools(const Folders& folders) {
    runIfPresent("update-mime-database", (fs::path(folders.dataHome) / "mime").string());
    runIfPresent("update-desktop-database", (fs::path(folders.dataHome) / "applications").string());
}

void replaceFile(const std::string& path, std::string_view text) {
    const std::string target = resolvedTarget(path);
    makeFolder(fs::path(target).parent_path());
    files::replaceAtomically(target, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::string findOnPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    for (std::string_view dir : split(path ? path : "/usr/local/bin:/usr/bin:/bin", ':')) {
        if (dir.empty()) continue;
        const std::string candidate = (fs::path(dir) / program).string();
        struct stat st {};
        if (::stat(candidate.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return {};
}

bool globKnown(const std::string& extension) { return globKnownIn(foldersFromEnvironment(), extension); }

void writeAssociation(const Association& association) {
    const Folders folders = foldersFromEnvironment();
    writeAssociationFiles(folders, association);
    runUpdateTools(folders);
}

}  // namespace velmoric::xdg
