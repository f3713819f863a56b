// Colour cycles in the window: played on request from the picture's context
// menu or the key C, never on the picture object, and stopped by any command,
// which then finds the decoded picture on screen.
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>

#include "window_fixture.h"

using namespace vqt;

namespace {

struct CycleTest : WindowTest {
    std::string corpus(const char* name) { return (vtest::corpusDir() / name).string(); }
    void SetUp() override {
        WindowTest::SetUp();
        if (!std::filesystem::exists(vtest::corpusDir())) GTEST_SKIP() << "no corpus";
        loadAndShow();
    }
    QList<QRgb> shownColours() const { return form->image1()->image().colorTable(); }
    QList<QRgb> decodedColours() const { return toImage(form->image1()->picture()).colorTable(); }
    void pressC() { QTest::keyClick(form.get(), Qt::Key_C); }
    // Lets the player run for a while.
    void play(int ms) {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    // The context menu's one action as the menu shows it: enabled or not.
    bool menuOffersPlay() {
        bool enabled = false, seen = false;
        QTimer::singleShot(50, [&] {
            if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
                seen = menu->actions().size() == 1 && menu->actions()[0]->text() == "Play colour cycles" &&
                       menu->actions()[0]->isCheckable();
                enabled = menu->actions()[0]->isEnabled();
                menu->close();
            }
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), form->image1()->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(form->image1(), &event);
        EXPECT_TRUE(seen);
        return enabled;
    }
};

TEST_F(CycleTest, TheKeyCPlaysTheFramesOnScreenAndAgainStopsWithTheDecodedColours) {
    viewer().Form_LinkExecute(corpus("pc1/LOGO.PC1"));
    const vtest::Bytes bitmap = form->image1()->picture().bytes();
    ASSERT_TRUE(viewer().animation.animated());
    EXPECT_TRUE(menuOffersPlay());
    pressC();
    EXPECT_TRUE(form->cyclePlayer().playing());
    EXPECT_TRUE(form->cycleAction()->isChecked());
    std::set<QList<QRgb>> frames, seen;
    for (const cycles::Frame& f : viewer().animation.frames) {
        QList<QRgb> table;
        for (const auto& c : f.palette) table.append(qRgb(c[2], c[1], c[0]));
        frames.insert(table);
    }
    // LOGO turns five entries every 3 ticks: several frames in 400 ms, each one of the period's.
    for (int i = 0; i < 20; ++i, play(20)) seen.insert(shownColours());
    EXPECT_GE(seen.size(), 3u);
    EXPECT_TRUE(std::includes(frames.begin(), frames.end(), seen.begin(), seen.end()));
    EXPECT_EQ(form->image1()->picture().bytes(), bitmap);
    pressC();
    EXPECT_FALSE(form->cyclePlayer().playing());
    EXPECT_EQ(shownColours(), decodedColours());
}

// Each command stops the play first; the picture it works on is the decoded one.
TEST_F(CycleTest, EveryCommandStopsThePlayFirst) {
    const std::vector<std::pair<const char*, std::function<void(Viewer&)>>> commands = {
        {"copy", [](Viewer& v) { v.mclip_Click(); }}, {"invert", [](Viewer& v) { v.monoinvert(); }},
        {"open, cancelled", [](Viewer& v) { v.fmenu_Click(0); }},
        {"hand-over of a bad file", [this](Viewer& v) { v.Form_LinkExecute(corpus("pi3/TRANS.PI3")); }},
        {"drop", [this](Viewer& v) { v.Image1_OLEDragDrop({corpus("pc1/MAGICMTN.PC1")}); }},
        {"save, refused", [](Viewer& v) { v.nopicture = kTrue, v.savepic(); }}};
    for (const auto& [what, command] : commands) {
        viewer().Form_LinkExecute(corpus("neo/LOD_AUTOBIG2.NEO"));
        pressC();
        play(120);
        ASSERT_NE(shownColours(), decodedColours()) << what;
        command(viewer());
        EXPECT_FALSE(form->cyclePlayer().playing()) << what;
        EXPECT_FALSE(form->cycleAction()->isChecked()) << what;
        EXPECT_EQ(shownColours(), decodedColours()) << what;
    }
}

TEST_F(CycleTest, NothingPlaysWithoutCyclesOrWhileTheCommandsAreOff) {
    viewer().Form_LinkExecute(corpus("neo/DIEGO.NEO"));
    EXPECT_FALSE(viewer().animation.animated());
    EXPECT_FALSE(menuOffersPlay());
    pressC();
    EXPECT_FALSE(form->cyclePlayer().playing());
    EXPECT_FALSE(form->cycleAction()->isChecked());

    viewer().Form_LinkExecute(corpus("pc1/LOGO.PC1"));
    viewer().menusoff();
    EXPECT_FALSE(menuOffersPlay());
    pressC();
    EXPECT_FALSE(form->cyclePlayer().playing());
    viewer().menuson();
    // An inverted picture is no longer the one its cycles belong to.
    viewer().Form_LinkExecute(corpus("pc3/CLIPART.PC3"));
    viewer().monoinvert();
    EXPECT_FALSE(viewer().animation.animated());
}

}  // namespace
