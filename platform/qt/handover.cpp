#include "platform/qt/handover.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QMetaObject>

namespace velmoric::qt {

QString handoverBusName(const QByteArray& baseName) {
    QString escaped;
    for (qsizetype i = 0; i < baseName.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(baseName[i]);
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        const bool digit = c >= '0' && c <= '9';
        if (letter || (digit && i > 0))
            escaped += QLatin1Char(char(c));
        else
            escaped += QStringLiteral("_%1").arg(unsigned(c), 2, 16, QLatin1Char('0'));
    }
    if (escaped.isEmpty()) escaped = QStringLiteral("_");
    return escaped + QStringLiteral(".cmdLine");
}

Handover::Handover(const QByteArray& baseName) : name_(handoverBusName(baseName)) {}

bool Handover::claim() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    // The object is there before the name, so a call that follows the name
    // at once finds it.
    if (!exported_)
        exported_ = bus.registerObject(QString::fromLatin1(kHandoverPath), this, QDBusConnection::ExportScriptableSlots);
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply = bus.interface()->registerService(
        name_, QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
    owner_ = reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
    return owner_;
}

bool Handover::earlierCopy() {
    if (owner_) return false;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    if (claim()) return false;
    // Refused: another connection owns the name. Any other failure of the bus
    // leaves this copy alone.
    const QDBusReply<bool> owned = bus.interface()->isServiceRegistered(name_);
    return owned.isValid() && owned.value();
}

bool Handover::send(const std::string& command) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage call = QDBusMessage::createMethodCall(name_, QString::fromLatin1(kHandoverPath),
                                                      QString::fromLatin1(kHandoverInterface),
                                                      QStringLiteral("LinkExecute"));
    call.setAutoStartService(false);
    call << QByteArray::fromStdString(command);
    const QDBusMessage reply = bus.call(call, QDBus::Block, kHandoverWaitMs);
    return reply.type() == QDBusMessage::ReplyMessage;
}

void Handover::setTopic(const std::string& topic) {
    topic_ = topic;
    if (topic_ == "cmdLine" && !owner_) claim();
}

void Handover::LinkExecute(const QByteArray& command) {
    if (topic_ != "cmdLine") {
        sendErrorReply(QDBusError::AccessDenied, QStringLiteral("This copy does not take commands on cmdLine."));
        return;
    }
    const std::string text = command.toStdString();
    QMetaObject::invokeMethod(
        this, [this, text] {
            if (handler) handler(text);
        },
        Qt::QueuedConnection);
}

}  // namespace velmoric::qt
