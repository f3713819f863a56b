#pragma once
// A viewer after start-up on the headless platform, in a folder of its own,
// on a desktop that knows the picture types already (no first-run question).
#include "platform/headless.h"
#include "shell/viewer.h"
#include "support.h"

namespace vtest {

struct ViewerTest : ::testing::Test {
    TempDir dir;
    velmoric::HeadlessPlatform ui;
    velmoric::Viewer v{ui};

    void SetUp() override {
        ui.setProgramFolder(dir.path().string());
        ui.registeredExtensions.insert("spu");
        v.Form_Load();
    }
};

}  // namespace vtest
