#pragma once
// The channel between copies of the program on the session D-Bus, the way
// Linux desktops hand files to a running application. The copy that takes
// the files of later copies owns a well-known bus name made from the
// program's base name and exports one object with one method that takes the
// command text. Owning the name is the test for an earlier copy: the bus
// gives a name to one connection at a time, and takes it back when the
// connection goes, also from a copy that crashed.
#include <QByteArray>
#include <QDBusContext>
#include <QObject>
#include <QString>
#include <functional>
#include <string>

namespace velmoric::qt {

// "<base name>.cmdLine", the base name escaped to the characters a bus name
// allows: letters and digits stay (a digit not in front), every other byte
// becomes "_" and two hex digits.
QString handoverBusName(const QByteArray& baseName);

inline constexpr const char* kHandoverPath = "/cmdLine";
inline constexpr const char* kHandoverInterface = "velmoric.cmdLine";
// How long a later copy waits for the earlier one to take its command.
inline constexpr int kHandoverWaitMs = 2000;

class Handover : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "velmoric.cmdLine")
public:
    explicit Handover(const QByteArray& baseName);

    // True when another connection owns the name; false when this copy owns
    // it now, or when no session bus can be reached.
    bool earlierCopy();
    // Calls the method of the name's owner; true when it answered in time.
    bool send(const std::string& command);
    // Commands are taken only on the topic "cmdLine"; that topic also takes
    // the name when no copy owns it.
    void setTopic(const std::string& topic);
    bool ownsName() const { return owner_; }

    std::function<void(const std::string&)> handler;

public slots:
    // The one method on the bus. It answers at once; the command runs from
    // the event loop, so a box that it shows keeps no later copy waiting.
    Q_SCRIPTABLE void LinkExecute(const QByteArray& command);

private:
    bool claim();

    QString name_;
    std::string topic_ = "Form1";
    bool exported_ = false;
    bool owner_ = false;
};

}  // namespace velmoric::qt
