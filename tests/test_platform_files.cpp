// Files as the decoders and the temporary bitmap need them: a source read up
// to its limit, a chosen file replaced whole, a private folder for the
// bitmap, and nothing planted at the bitmap's name ever followed.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "convert/convert.h"
#include "platform/files.h"
#include "viewer_fixture.h"

using namespace velmoric;
namespace fs = std::filesystem;

namespace {

TEST(Files, ReadStopsAtTheLimit) {
    vtest::TempDir dir;
    const auto path = dir.random("big.ca1", 70000, 1);
    const SourceData d = files::readSource(path, 65533);
    EXPECT_EQ(std::make_pair(d.bytes.size(), d.length), std::make_pair(std::size_t(65533), std::uint64_t(70000)));
    EXPECT_EQ(files::readSource(path, 100000).bytes.size(), 70000u);
    EXPECT_EQ(files::readWhole(path, 70000).size(), 70000u);
    EXPECT_THROW(files::readWhole(path, 69999), PlatformError) << "a whole file is read only up to its limit";
}

TEST(Files, PrivateFolderIsTheProcessesAloneAndGoesWithIt) {
    vtest::TempDir runtime;
    ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
    auto folder = std::make_unique<files::PrivateFolder>();
    const fs::path path = folder->path();
    ::unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(path.parent_path(), runtime.path());
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
    vtest::writeFile((path / "left.bmp").string(), {1});
    folder.reset();
    EXPECT_FALSE(fs::exists(path));
}

// A process ended by one of the signals a desktop or a terminal sends takes
// its private folder with it, and still ends by that signal.
TEST(Files, PrivateFolderGoesWithAProcessEndedBySignal) {
    for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
        vtest::TempDir runtime;
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
            files::PrivateFolder folder;
            vtest::writeFile(folder.path() + "/tmp~~~$$.BMP", {1, 2});
            ::kill(::getpid(), signal);
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << signal << ": " << status;
        EXPECT_TRUE(fs::is_empty(runtime.path())) << signal;
    }
}

// Whatever stands at a chosen name, the replace leaves exactly the new bytes
// there and nothing else in the folder: a new file gets the mode of any new
// file, a replaced one keeps its own, and a link is replaced, not followed.
TEST(Files, ReplaceAtomicallyLeavesOnlyTheNewBytes) {
    enum class Before { Nothing, File0600, Link, DanglingLink };
    for (const Before before : {Before::Nothing, Before::File0600, Before::Link, Before::DanglingLink}) {
        SCOPED_TRACE(int(before));
        vtest::TempDir dir, elsewhere;
        const std::string path = dir.file("out.bmp"), target = elsewhere.file("mine");
        vtest::writeFile(target, {7});
        if (before == Before::File0600) {
            vtest::writeFile(path, {1, 2, 3, 4});
            fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
        }
        if (before == Before::Link) fs::create_symlink(target, path);
        if (before == Before::DanglingLink) fs::create_symlink(elsewhere.file("none"), path);
        const mode_t mask = ::umask(022);
        ::umask(mask);
        files::replaceAtomically(path, vtest::Bytes{5, 6});
        EXPECT_EQ(vtest::readFile(path), (vtest::Bytes{5, 6}));
        EXPECT_FALSE(fs::is_symlink(path));
        EXPECT_EQ(vtest::readFile(target), vtest::Bytes{7});
        EXPECT_FALSE(fs::exists(elsewhere.file("none")));
        EXPECT_EQ(vtest::entryCount(dir.path()), 1);
        const auto expected = before == Before::File0600 ? fs::perms(0600) : fs::perms(0666 & ~mask);
        EXPECT_EQ(fs::status(path).permissions(), expected);
    }
}

// A platform whose delete of the temporary bitmap can be made to fail.
struct UndeletablePlatform : HeadlessPlatform {
    bool deleteFails = false;
    void deleteFile(const std::string& path) override {
        if (deleteFails) throw PlatformError(path, "cannot delete: Busy");
        HeadlessPlatform::deleteFile(path);
    }
};

using TemporaryBitmap = vtest::ViewerOn<UndeletablePlatform>;

// Whatever stands at the temporary bitmap's name before an open, the open
// shows its new picture and leaves what was there (and what a link points
// to) as it was; so does a delete of the bitmap that fails after the load.
TEST_F(TemporaryBitmap, IsNeverWrittenThroughWhatIsPlantedThere) {
    const std::string temporary = ui.temporaryBitmapPath(), target = dir.file("authorized_keys");
    const vtest::Bytes keys = {'k', 'e', 'y'};
    // The failed delete comes first, while the start-up picture is on show.
    enum Planted { DeleteFails, LinkToUsersFile, DanglingLink, RegularFile };
    for (Planted planted : {DeleteFails, LinkToUsersFile, DanglingLink, RegularFile}) {
        SCOPED_TRACE(planted);
        const std::string picture = dir.random("p" + std::to_string(planted) + ".pi3", 32034, planted);
        fs::remove(target);
        fs::remove(temporary);
        if (planted == LinkToUsersFile) vtest::writeFile(target, keys);
        if (planted == RegularFile) vtest::writeFile(temporary, keys);
        if (planted == LinkToUsersFile || planted == DanglingLink) fs::create_symlink(target, temporary);
        ui.deleteFails = planted == DeleteFails;

        openNamed(picture);
        EXPECT_TRUE(ui.messages.empty());
        EXPECT_EQ(ui.image.bytes(), decodeFile(picture).bitmap);
        EXPECT_EQ(std::tie(ui.label, v.kind, v.nopicture),
                  std::make_tuple("P" + std::to_string(planted) + ".PI3  Degas 640*400 Mono", 3, kFalse));
        EXPECT_EQ(fs::exists(target) ? vtest::readFile(target) : vtest::Bytes{},
                  planted == LinkToUsersFile ? keys : vtest::Bytes{});
        EXPECT_EQ(fs::exists(fs::symlink_status(temporary)), planted == DeleteFails);
    }
}

}  // namespace
