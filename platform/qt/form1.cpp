#include "platform/qt/form1.h"

#include "platform/qt/controls.h"

#include <QCloseEvent>
#include <QMenu>
#include <QMenuBar>
#include <QResizeEvent>
#include <QWindow>

#include "platform/qt/artwork.h"
#include "platform/qt/form2.h"
#include "platform/qt/form4.h"

namespace velmoric::qt {
namespace {

// Design positions in pixels (twips / 15).
constexpr int kToolbarHeight = 420 / 15;
constexpr QRect kLabel1Rect{15 / 15, 480 / 15, 6585 / 15, 300 / 15};
constexpr QRect kImage1Rect{0, 840 / 15, 6600 / 15, 4080 / 15};

// The client area below the menu bar. The toolbar is aligned to its top
// edge and always spans its width.
class ClientArea : public QWidget {
public:
    explicit ClientArea(QWidget* parent) : QWidget(parent) {}
    QToolBar* toolbar = nullptr;

protected:
    void resizeEvent(QResizeEvent* event) override {
        if (toolbar) toolbar->setGeometry(0, 0, event->size().width(), kToolbarHeight);
    }
};

}  // namespace

Form1::Form1(QtPlatform& platform) : platform_(platform), viewer_(platform) {
    platform_.attach(this);
    setWindowTitle(QString::fromLatin1(kAppCaption));
    setWindowIcon(QIcon(windowIconPixmap()));
    setBackground(this, kFormBackground);
    buildMenus();
    buildControls();
    buildToolbar();
    buildCycleControls();
    resize(kClientWidthTwips / 15, kClientHeightTwips / 15 + menuBarHeightFor(kClientWidthTwips / 15));

    viewer_.unloadRequest = [this] { close(); };
    viewer_.helpDialog = [this] {
        // Built at each opening; nothing of it stays after it closes.
        Form2 help(viewer_, this);
        help.exec();
    };
    viewer_.optionsDialog = [this] {
        // Built at each opening and modal; the core lays the window out anew
        // when it has closed.
        Form4 options(*this);
        options.load();
        options.exec();
    };
    timer1_.setInterval(100);
    connect(&timer1_, &QTimer::timeout, this, &Form1::timerTick);
    timer1_.start();
}

Form1::~Form1() { platform_.attach(nullptr); }

void Form1::buildMenus() {
    for (std::size_t i = 0; i < mfile_.size(); ++i) mfile_[i] = menuBar()->addMenu(QString::fromLatin1(kTopMenuCaptions[i]));
    greyDisabledTextReadably(menuBar());  // the titles are disabled for a whole slide show
    for (const MenuItem& item : menuItems()) {
        QMenu* menu = mfile_.at(std::size_t(item.top));
        if (qt::isSeparator(item)) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(QString::fromLatin1(item.caption));
        if (item.shortcut[0] != '\0') action->setShortcut(QKeySequence(QString::fromLatin1(item.shortcut)));
        connect(action, &QAction::triggered, this, [this, &item] { menuItemClicked(item); });
        menuActions_.emplace_back(&item, action);
    }
}

void Form1::buildControls() {
    auto* client = new ClientArea(this);
    client->setAutoFillBackground(true);
    setCentralWidget(client);

    toolbar1_ = new QToolBar(client);
    toolbar1_->setObjectName("Toolbar1");
    toolbar1_->setMovable(false);
    toolbar1_->setFloatable(false);
    toolbar1_->setIconSize(QSize(16, 16));
    toolbar1_->setToolButtonStyle(Qt::ToolButtonIconOnly);
    client->toolbar = toolbar1_;

    label1_ = new QLabel(client);
    label1_->setObjectName("Label1");
    label1_->setGeometry(kLabel1Rect);
    label1_->setAlignment(Qt::AlignCenter);
    label1_->setTextFormat(Qt::PlainText);
    label1_->setAutoFillBackground(true);

    // The client side of the hand-over between two copies; never seen.
    label2_ = new QLabel(QStringLiteral("Label2"), client);
    label2_->setObjectName("Label2");
    label2_->hide();

    image1_ = new Image1(client);
    image1_->setObjectName("Image1");
    image1_->setGeometry(kImage1Rect);
    image1_->setPicture(startupPicture());
    connect(image1_, &Image1::clicked, this, [this] { viewer_.Image1_Click(); });
    // The open runs from the event loop, after the drop has been answered.
    connect(image1_, &Image1::filesDropped, this, [this](const std::vector<std::string>& files) {
        QMetaObject::invokeMethod(this, [this, files] { viewer_.Image1_OLEDragDrop(files); }, Qt::QueuedConnection);
    });
}

// The play of colour cycles stands outside the menus and the toolbar: a
// context menu on the picture and the key C. It works only while the
// commands are on, and never changes the picture object.
void Form1::buildCycleControls() {
    cyclePlayer_ = new CyclePlayer(*image1_, this);
    viewer_.stopCycles = [this] { playCycles(false); };
    cycleAction_ = new QAction(QStringLiteral("Play colour cycles"), this);
    cycleAction_->setCheckable(true);
    cycleAction_->setShortcut(QKeySequence(Qt::Key_C));
    cycleAction_->setShortcutContext(Qt::WindowShortcut);
    addAction(cycleAction_);
    connect(cycleAction_, &QAction::triggered, this, &Form1::playCycles);
    connect(image1_, &Image1::contextMenuAsked, this, [this](const QPoint& at) {
        cycleAction_->setEnabled(toolbar1_->isEnabled() && viewer_.animation.animated());
        QMenu menu(this);
        menu.addAction(cycleAction_);
        menu.exec(at);
        cycleAction_->setEnabled(true);
    });
}

void Form1::playCycles(bool play) {
    if (play && toolbar1_->isEnabled())
        cyclePlayer_->play(viewer_.animation);
    else
        cyclePlayer_->stop();
    cycleAction_->setChecked(cyclePlayer_->playing());
}

void Form1::buildToolbar() {
    for (const ToolButton& button : toolButtons()) {
        if (!button.key) {
            toolbar1_->addSeparator();
            continue;
        }
        QAction* action = toolbar1_->addAction(QIcon(imageListPicture(button.picture)), QString());
        action->setObjectName(QString::fromLatin1(button.key));
        action->setData(QString::fromLatin1(button.key));
        action->setToolTip(QString::fromLatin1(button.toolTip));
    }
    connect(toolbar1_, &QToolBar::actionTriggered, this, &Form1::toolbarClicked);
}

QAction* Form1::menuAction(MenuArray array, int index) const {
    for (const auto& [item, action] : menuActions_)
        if (item->array == array && item->index == index) return action;
    return nullptr;
}

QAction* Form1::toolbarAction(const QString& key) const {
    for (QAction* action : toolbar1_->actions())
        if (action->data().toString() == key) return action;
    return nullptr;
}

int Form1::menuBarHeightFor(int width) const {
    // The same rule as the window's layout applies to its menu bar.
    const QMenuBar* bar = menuBar();
    int height = bar->heightForWidth(std::max(width, bar->minimumWidth()));
    if (height == -1) height = bar->sizeHint().height();
    const int minimum = std::max(bar->minimumSizeHint().height(), bar->minimumHeight());
    return std::clamp(height, minimum, std::max(minimum, bar->maximumHeight()));
}

void Form1::menuItemClicked(const MenuItem& item) {
    // A disabled top-level menu also stops its items' shortcuts.
    if (!mfile_.at(std::size_t(item.top))->menuAction()->isEnabled()) return;
    switch (item.array) {
    case MenuArray::fmenu: viewer_.fmenu_Click(item.index); break;
    case MenuArray::mclip: viewer_.mclip_Click(); break;
    case MenuArray::medit: viewer_.medit_Click(item.index); break;
    case MenuArray::mhelp: viewer_.mhelp_Click(item.index); break;
    }
}

void Form1::toolbarClicked(QAction* action) {
    if (!toolbar1_->isEnabled()) return;
    viewer_.toolbarClick(action->data().toString().toStdString());
}

void Form1::timerTick() {
    viewer_.Timer1_Timer();
    if (!ticked_) {
        ticked_ = true;
        emit firstTickDone();
    }
}

void Form1::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (platform_.windowSizeReported(event->size())) viewer_.Form_Resize();
}

void Form1::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) {
        constexpr Qt::WindowStates kNotNormal = Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen;
        const Qt::WindowStates before = static_cast<QWindowStateChangeEvent*>(event)->oldState();
        platform_.windowStateChanged();
        if (!(before & kNotNormal) && (windowState() & kNotNormal)) {
            restoreSize_ = size();
        } else if ((before & (Qt::WindowMaximized | Qt::WindowFullScreen)) && !(windowState() & kNotNormal) &&
                   restoreSize_.isValid()) {
            // The window manager says that the window is no longer maximised
            // before it gives the earlier size back: the layout must run on
            // that size, not on the maximised one.
            platform_.windowRestored(restoreSize_);
        }
        viewer_.Form_Resize();
    }
}

void Form1::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    // The window system's own reports of the window's size arrive at the
    // window handle, which exists from the first showing on.
    if (QWindow* handle = windowHandle()) handle->installEventFilter(this);
}

bool Form1::eventFilter(QObject* watched, QEvent* event) {
    if (watched == windowHandle() && event->type() == QEvent::Resize)
        platform_.windowSystemReported(static_cast<QResizeEvent*>(event)->size());
    return QMainWindow::eventFilter(watched, event);
}

void Form1::closeEvent(QCloseEvent* event) {
    if (viewer_.Form_QueryUnload())
        event->ignore();
    else
        event->accept();
}

}  // namespace velmoric::qt
