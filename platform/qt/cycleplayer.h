#pragma once
// Plays the colour cycles of the picture on Image1 by giving its indexed
// image the palette of each frame in turn; the pixels and the picture object
// are never touched, so stopping shows the decoded picture exactly.
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QRgb>
#include <QTimer>
#include <vector>

#include "cycles/cycles.h"

namespace velmoric::qt {

class Image1;

class CyclePlayer : public QObject {
    Q_OBJECT
public:
    CyclePlayer(Image1& image, QObject* parent);

    // Starts from the first frame; an animation of one frame plays nothing.
    void play(const cycles::Animation& animation);
    void stop();
    bool playing() const { return timer_.isActive(); }

private:
    void showFrameDue();

    Image1& image_;
    std::vector<QList<QRgb>> tables_;
    std::vector<long long> ends_;  // when each frame ends, in ms from the start of a period
    std::size_t shown_ = 0;
    QElapsedTimer clock_;
    QTimer timer_;
};

}  // namespace velmoric::qt
