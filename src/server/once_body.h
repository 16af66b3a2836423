#pragma once

#include <QByteArray>
#include <QIODevice>

namespace quorvelle {

/// A request body that can be read once only. The network layer sends a request again,
/// unasked, when a connection breaks before the answer; it has to give up where the body
/// is gone.
class OnceBody : public QIODevice {
public:
    /// The device is open.
    explicit OnceBody(const QByteArray& content);

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;
    bool reset() override { return false; }

protected:
    qint64 readData(char* target, qint64 most) override;
    qint64 writeData(const char* source, qint64 size) override;

private:
    QByteArray bytes;
    qint64 taken = 0;
};

}  // namespace quorvelle
