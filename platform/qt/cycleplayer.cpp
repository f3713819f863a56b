#include "platform/qt/cycleplayer.h"

#include <algorithm>

#include "platform/qt/image1.h"

namespace velmoric::qt {

CyclePlayer::CyclePlayer(Image1& image, QObject* parent) : QObject(parent), image_(image) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &CyclePlayer::showFrameDue);
}

void CyclePlayer::play(const cycles::Animation& animation) {
    stop();
    if (animation.frames.size() < 2) return;
    tables_.clear();
    ends_.clear();
    long long ticks = 0;
    for (const cycles::Frame& f : animation.frames) {
        QList<QRgb> table;
        for (const cycles::Colour& c : f.palette) table.append(qRgb(c[2], c[1], c[0]));
        tables_.push_back(std::move(table));
        ticks += f.ticks;
        ends_.push_back(ticks * 1000 / cycles::kTicksPerSecond);
    }
    shown_ = 0;
    clock_.start();
    timer_.start(int(ends_.front()));
}

void CyclePlayer::stop() {
    if (!timer_.isActive()) return;
    timer_.stop();
    image_.showDecodedColours();
}

// The frame is chosen by the clock, not by counting timeouts, so a late
// timer skips frames instead of slowing the cycle down.
void CyclePlayer::showFrameDue() {
    const long long period = ends_.back();
    const long long now = clock_.elapsed() % period;
    const std::size_t due = std::size_t(std::upper_bound(ends_.begin(), ends_.end(), now) - ends_.begin());
    if (due != shown_) {
        image_.setColourTable(tables_[due]);
        shown_ = due;
    }
    timer_.start(int(ends_[due] - now));
}

}  // namespace velmoric::qt
