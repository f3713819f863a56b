#pragma once
// `Form1`, the main window: the menus, `Toolbar1`, `Label1`, the hidden
// `Label2`, `Image1` and `Timer1` in their design state. It holds the core's
// Viewer and forwards every event to it; the platform reads and sets the
// controls through the accessors below.
#include <QLabel>
#include <QMainWindow>
#include <QTimer>
#include <QToolBar>
#include <array>

#include "platform/qt/commands.h"
#include "platform/qt/cycleplayer.h"
#include "platform/qt/image1.h"
#include "platform/qt/qtplatform.h"
#include "shell/viewer.h"

namespace velmoric::qt {

// Design measures in twips; 15 twips a pixel.
inline constexpr int kClientWidthTwips = 6600;
inline constexpr int kClientHeightTwips = 5205;
inline constexpr QRgb kFormBackground = 0xC0C0C0;

class Form1 : public QMainWindow {
    Q_OBJECT
public:
    explicit Form1(QtPlatform& platform);
    ~Form1() override;

    Viewer& viewer() { return viewer_; }

    // Start-up: the core's Form_Load, with the window still hidden.
    void load() { viewer_.Form_Load(); }

    Image1* image1() const { return image1_; }
    QLabel* label1() const { return label1_; }
    QLabel* label2() const { return label2_; }
    QToolBar* toolbar1() const { return toolbar1_; }
    QTimer* timer1() { return &timer1_; }
    QMenu* mfile(int index) const { return mfile_.at(std::size_t(index)); }
    QAction* menuAction(MenuArray array, int index) const;
    QAction* toolbarAction(const QString& key) const;
    // "Play colour cycles" of Image1's context menu, also on the key C.
    QAction* cycleAction() const { return cycleAction_; }
    const CyclePlayer& cyclePlayer() const { return *cyclePlayer_; }

    // The height the menu bar takes at a window width, as the window's
    // layout gives it.
    int menuBarHeightFor(int width) const;

signals:
    // The first tick of Timer1 has run: the window shows, and the file of
    // the command line is open.
    void firstTickDone();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildMenus();
    void buildToolbar();
    void buildControls();
    void menuItemClicked(const MenuItem& item);
    void toolbarClicked(QAction* action);
    void timerTick();
    void buildCycleControls();
    void playCycles(bool play);

    QtPlatform& platform_;
    Viewer viewer_;
    std::array<QMenu*, 4> mfile_{};
    std::vector<std::pair<const MenuItem*, QAction*>> menuActions_;
    QToolBar* toolbar1_ = nullptr;
    QLabel* label1_ = nullptr;
    QLabel* label2_ = nullptr;
    Image1* image1_ = nullptr;
    QTimer timer1_;
    CyclePlayer* cyclePlayer_ = nullptr;
    QAction* cycleAction_ = nullptr;
    bool ticked_ = false;
    QSize restoreSize_;  // the size in the normal state before maximising
};

}  // namespace velmoric::qt
