// The real options dialog under the offscreen platform: what it shows on
// opening, the preview on its sheet, every way of closing, and the options
// command that shows it modally.
#include <QCheckBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTimer>

#include "platform/qt/form4.h"
#include "window_fixture.h"

using namespace vqt;

namespace {

struct Form4Test : WindowTest {
    std::unique_ptr<Form4> dialog;  // a child of the main window: goes first, as a member of the test
    void store(const std::string& key, const std::string& value) {
        platform->QtPlatform::writeSetting("velmoric", "options", key, value);
    }
    Form4& open() {
        dialog = std::make_unique<Form4>(*form);
        platform->log.clear();
        dialog->load();
        dialog->show();
        return *dialog;
    }
    std::string writes() const {
        std::string out;
        for (const std::string& line : platform->log)
            if (line.starts_with("write ")) out += line.substr(14) + " ";
        return out;
    }
};

// The defaults of an empty store, and the start-up picture in the preview,
// shrunk without smoothing: each screen pixel is the nearest picture pixel.
TEST_F(Form4Test, AnEmptyStoreShowsTheDefaultsAndThePreviewTheStartUpPicture) {
    Form4& f = open();
    EXPECT_TRUE(f.option1(1)->isChecked() && f.option2(1)->isChecked()) << "2 Seconds, Portrait";
    EXPECT_EQ(f.hscroll1()->value(), 100);
    for (int n = 1; n <= 4; ++n) EXPECT_EQ(f.check(n)->isChecked(), n == 3) << "Check" << n;
    EXPECT_EQ(writes(), "") << "nothing is written before closing";

    const QImage drawn = f.image1()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QImage source = form->image1()->image().convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(drawn, source.scaled(88, 55, Qt::IgnoreAspectRatio, Qt::FastTransformation));
}

TEST_F(Form4Test, TheScaleAndTheOrientationMoveThePreviewOnTheSheet) {
    store("printscale", "5");
    Form4& f = open();
    EXPECT_EQ(f.label3()->text(), "5");
    EXPECT_EQ(f.previewTwips(), QRect(629, 917, 66, 41)) << "0.05 of 1325 twips, centred on 1875";

    f.hscroll1()->setValue(100);
    EXPECT_EQ(f.label3()->text(), "100");
    EXPECT_EQ(f.image1()->x(), 0);
    EXPECT_EQ(f.image1()->width(), f.picture1()->width()) << "the preview fills the width of the sheet";

    f.hscroll1()->setValue(40);
    const QRect portrait = f.previewTwips();
    f.option2(0)->click();
    EXPECT_EQ(f.sheetTwips(), QSize(1325, 936));
    EXPECT_EQ(f.picture1()->size(), QSize(88, 62));
    EXPECT_EQ(f.previewTwips(), QRect(portrait.left(), 302, 530, 331)) << "same size, centred anew";
}

TEST_F(Form4Test, EveryWayOfClosingStoresWhatTheDialogShows) {
    const std::function<void(Form4&)> ways[] = {
        [](Form4& f) { f.command1()->click(); }, [](Form4& f) { f.close(); },
        [](Form4& f) {
            QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QApplication::sendEvent(&f, &escape);
        },
    };
    for (const auto& close : ways) {
        store("delay", "7");
        store("size", "0");
        Form4& f = open();
        EXPECT_TRUE(f.option1(1)->isChecked()) << "a delay of 7 selects 2 Seconds";
        f.check(2)->click();
        f.hscroll1()->setValue(30);
        close(f);
        EXPECT_EQ(writes(), "delay=2 save=0 size=1 repeat=1 orientation=1 printscale=30 single=0 ");
    }
}

TEST_F(Form4Test, TheOptionsCommandShowsTheDialogModallyAndLaysOutAgain) {
    loadAndShow();
    layOut(1, 0);
    for (QAction* command : {form->menuAction(MenuArray::medit, 2), form->toolbarAction("pref")}) {
        store("size", "0");
        setClientWidth(500);
        // Answered only when modal: a dialog that is not leaves the width as it was.
        QTimer::singleShot(0, [&] {
            if (auto* f = qobject_cast<Form4*>(QApplication::activeModalWidget())) {
                f->check(2)->click();
                f->command1()->click();
            }
        });
        command->trigger();
        settle(*platform);
        EXPECT_EQ(form->centralWidget()->width(), 320) << "native width as soon as the dialog has closed";
    }
}

}  // namespace
