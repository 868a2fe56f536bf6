// What this program offers on a Wayland clipboard, in one write, and the serving of it to those who paste.
#pragma once

#include "platform/OfferedFlavours.h"
#include "platform/wayland/OutgoingStreams.h"

struct zwlr_data_control_manager_v1;
struct zwlr_data_control_source_v1;

namespace corvatto {

// Main thread.
class DataControlSource : public QObject {
    Q_OBJECT

public:
    // Offers the content, and `mark` as a further MIME type, by which we know our own offer when it is
    // announced. Transfers under way outlive the source, in `streams`.
    DataControlSource(zwlr_data_control_manager_v1& manager, const ClipboardContent& content,
                      const QByteArray& mark, OutgoingStreams& streams);
    ~DataControlSource() override;

    zwlr_data_control_source_v1* raw() const { return m_raw; }
    const QByteArray& mark() const { return m_mark; }

Q_SIGNALS:
    // Another selection has taken its place, or the compositor has refused it. Nobody will ask any more.
    void cancelled();

private:
    struct Listeners;
    void send(const QByteArray& type, FileDescriptor receiver);

    zwlr_data_control_source_v1* m_raw;
    QByteArray m_mark;
    std::shared_ptr<OfferedFlavours> m_flavours;
    OutgoingStreams& m_streams;
};

} // namespace corvatto
