#pragma once
// A viewer after start-up on a headless platform, in a folder of its own,
// on a desktop that knows the picture types already (no first-run question).
#include "platform/headless.h"
#include "shell/viewer.h"
#include "support.h"

namespace vtest {

template <typename Platform>
struct ViewerOn : ::testing::Test {
    TempDir dir;
    Platform ui;
    velmoric::Viewer v{ui};

    void SetUp() override {
        ui.setProgramFolder(dir.path().string());
        ui.registeredExtensions.insert("spu");
        v.Form_Load();
    }
    // Opens `path` as a drop or a hand-over does: mode 2.
    void openNamed(const std::string& path) {
        ui.setFileName(path);
        v.openmode = 2;
        v.openpic();
        v.openmode = 0;
    }
    // What an open or a command may change beside the picture.
    auto state() { return std::make_tuple(ui.label, v.kind, v.saved, v.nopicture, ui.outerW, ui.outerH); }
    auto snapshot() { return std::make_pair(state(), ui.image); }
};

using ViewerTest = ViewerOn<velmoric::HeadlessPlatform>;

}  // namespace vtest
