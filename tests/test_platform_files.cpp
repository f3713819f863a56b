// Files as the decoders, the temporary bitmap and the converter need them:
// nothing planted at a name the program writes is ever followed, and no
// failure leaves a partial file.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "convert/convert.h"
#include "platform/files.h"
#include "platform/headless.h"
#include "shell/viewer.h"
#include "support.h"

using namespace velmoric;
namespace fs = std::filesystem;

namespace {

TEST(Files, ReadSourceStopsAtTheLimitButKnowsTheLength) {
    vtest::TempDir dir;
    const auto path = dir.file("big.ca1");
    vtest::writeFile(path, vtest::randomBytes(70000, 1));
    const SourceData d = files::readSource(path, 65533);
    EXPECT_EQ(d.bytes.size(), 65533u);
    EXPECT_EQ(d.length, 70000u);
    EXPECT_EQ(files::readSource(path, 100000).bytes.size(), 70000u);
}

TEST(Files, PrivateFolderIsTheProcessesAloneAndGoesWithIt) {
    vtest::TempDir runtime;
    ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
    std::string path;
    {
        files::PrivateFolder folder;
        path = folder.path();
        ::unsetenv("XDG_RUNTIME_DIR");
        EXPECT_EQ(fs::path(path).parent_path(), runtime.path());
        struct stat st {};
        ASSERT_EQ(::stat(path.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0700u);
        vtest::writeFile(path + "/left.bmp", {1});
    }
    EXPECT_FALSE(fs::exists(path));
}

// Whatever stands at the temporary bitmap's name before an open, the open
// shows its picture and leaves what was there (and what a link points to)
// as it was.
TEST(Files, TemporaryBitmapIsNeverWrittenThroughWhatIsPlantedThere) {
    vtest::TempDir dir;
    const std::string picture = dir.file("pic.pi1");
    vtest::writeFile(picture, vtest::randomBytes(32034, 2));
    const vtest::Bytes keys = {'k', 'e', 'y'};
    enum class Planted { LinkToUsersFile, DanglingLink, RegularFile };
    for (Planted planted : {Planted::LinkToUsersFile, Planted::DanglingLink, Planted::RegularFile}) {
        HeadlessPlatform ui;
        ui.registeredExtensions.insert("spu");
        Viewer v(ui);
        v.Form_Load();
        const std::string temporary = ui.temporaryBitmapPath();
        const std::string target = dir.file("authorized_keys");
        fs::remove(target);
        if (planted == Planted::LinkToUsersFile) vtest::writeFile(target, keys);
        if (planted == Planted::RegularFile) vtest::writeFile(temporary, keys);
        if (planted != Planted::RegularFile) fs::create_symlink(target, temporary);

        ui.setFileName(picture);
        v.openmode = 2;
        v.openpic();
        EXPECT_TRUE(ui.messages.empty()) << int(planted);
        EXPECT_EQ(ui.image.bytes(), decodeFile(picture).bitmap) << int(planted);
        EXPECT_EQ(fs::exists(target), planted == Planted::LinkToUsersFile) << int(planted);
        if (planted == Planted::LinkToUsersFile) {
            EXPECT_EQ(vtest::readFile(target), keys);
        }
        EXPECT_FALSE(fs::exists(fs::symlink_status(temporary)));
    }
}

// A platform whose delete of the temporary bitmap fails.
struct UndeletablePlatform : HeadlessPlatform {
    void deleteFile(const std::string& path) override { throw PlatformError(path, "cannot delete: Busy"); }
};

TEST(Files, AFailedDeleteAfterTheLoadKeepsTheNewPicture) {
    vtest::TempDir dir;
    UndeletablePlatform ui;
    ui.registeredExtensions.insert("spu");
    Viewer v(ui);
    v.Form_Load();
    const std::string picture = dir.file("new.pi3");
    vtest::writeFile(picture, vtest::randomBytes(32034, 3));
    ui.setFileName(picture);
    v.openmode = 2;
    v.openpic();
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(v.kind, 3);
    EXPECT_EQ(ui.label, "NEW.PI3  Degas 640*400 Mono");
    EXPECT_EQ(v.nopicture, kFalse);
    EXPECT_EQ(ui.image.height(), 400);
}

struct ConvertFiles : ::testing::Test {
    vtest::TempDir dir;
    StringConsole console;
    const std::string& err = console.errText;
    int run(std::vector<std::string> args) {
        console = {};
        return runConvert(args, console);
    }
    std::vector<std::string> namesIn(const std::string& folder) {
        std::vector<std::string> names;
        for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
        return names;
    }
};

TEST_F(ConvertFiles, SpecialFilesGiveAnErrorLineAndCreateNothing) {
    ASSERT_EQ(::mkfifo(dir.file("x.pi1").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", dir.file("x.neo"));
    fs::create_directories(dir.file("x.pc1"));
    fs::create_directories(dir.file("out"));
    EXPECT_EQ(run({"-o", dir.file("out"), dir.file("x.pi1"), dir.file("x.neo"), dir.file("x.pc1/")}), 1);
    // A folder argument is searched for pictures; this one holds none.
    EXPECT_EQ(err, dir.file("x.pc1/") + ": no picture files in this folder\n" + dir.file("x.pi1") +
                             ": is a FIFO, not a picture file\n" + dir.file("x.neo") +
                             ": is a character device, not a picture file\n");
    EXPECT_TRUE(namesIn(dir.file("out")).empty());
}

TEST_F(ConvertFiles, InputsThatWouldWriteOneOutputAreRefusedBeforeAnyWork) {
    for (const char* sub : {"a", "b"}) {
        fs::create_directories(dir.path() / sub);
        vtest::writeFile(dir.file(std::string(sub) + "/X.PI1"), vtest::randomBytes(32034, 4));
    }
    vtest::writeFile(dir.file("a/Y.PI1"), vtest::randomBytes(32034, 5));
    EXPECT_EQ(run({"-o", dir.file("D"), dir.file("a/Y.PI1"), dir.file("a/X.PI1"), dir.file("b/X.PI1")}), 2);
    const std::string output = (fs::path(dir.file("D")) / "X.PI1.bmp").string();
    EXPECT_EQ(err, dir.file("a/X.PI1") + ": " + dir.file("b/X.PI1") + " would be written to the same file " +
                             output + "\n" + dir.file("b/X.PI1") + ": " + dir.file("a/X.PI1") +
                             " would be written to the same file " + output + "\n");
    EXPECT_FALSE(fs::exists(dir.file("D")));
    // With -r from their common folder the outputs keep the folders apart.
    EXPECT_EQ(run({"-r", "-o", dir.file("D"), dir.path().string()}), 0) << err;
    EXPECT_TRUE(fs::exists(dir.file("D/a/X.PI1.bmp")) && fs::exists(dir.file("D/b/X.PI1.bmp")));
}

TEST_F(ConvertFiles, ALinkAtTheOutputNameIsReplacedNotFollowed) {
    vtest::writeFile(dir.file("p.neo"), vtest::randomBytes(32128, 6));
    vtest::writeFile(dir.file("mine"), {'m'});
    fs::create_symlink(dir.file("mine"), dir.file("p.neo.bmp"));
    EXPECT_EQ(run({dir.file("p.neo")}), 0);
    EXPECT_FALSE(fs::is_symlink(dir.file("p.neo.bmp")));
    EXPECT_EQ(vtest::readFile(dir.file("p.neo.bmp")), decodeFile(dir.file("p.neo")).bitmap);
    EXPECT_EQ(vtest::readFile(dir.file("mine")), vtest::Bytes{'m'});
}

// A disk that fills up during the write, made by a file size limit in a
// child process: the converter reports it and leaves no file, whole or part.
TEST_F(ConvertFiles, AFullDiskLeavesNoPartialFile) {
    vtest::writeFile(dir.file("p.neo"), vtest::randomBytes(32128, 7));
    vtest::writeFile(dir.file("q.spu"), vtest::randomBytes(51104, 8));
    fs::create_directories(dir.file("out"));
    for (const char* format : {"bmp", "png"}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{20000, 20000};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            StringConsole quiet;
            ::_exit(runConvert({"-j", "1", "-f", format, "-o", dir.file("out"), dir.file("p.neo"), dir.file("q.spu")},
                               quiet));
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << format;
        EXPECT_TRUE(namesIn(dir.file("out")).empty()) << format;
    }
}

}  // namespace
