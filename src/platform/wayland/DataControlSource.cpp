#include "platform/wayland/DataControlSource.h"

#include "wlr-data-control-unstable-v1-client-protocol.h"

#include <QCoreApplication>
#include <QPointer>

namespace corvatto {
namespace {

constexpr std::chrono::seconds readerSilence{30};

} // namespace

struct DataControlSource::Listeners {
    static void send(void* data, zwlr_data_control_source_v1* /*raw*/, const char* type, int32_t descriptor) {
        static_cast<DataControlSource*>(data)->send(type, FileDescriptor(descriptor));
    }
    static void cancelled(void* data, zwlr_data_control_source_v1* /*raw*/) {
        Q_EMIT static_cast<DataControlSource*>(data)->cancelled(); // destroys it
    }
    static constexpr zwlr_data_control_source_v1_listener source{send, cancelled};
};

DataControlSource::DataControlSource(zwlr_data_control_manager_v1& manager, const ClipboardContent& content,
                                     const QByteArray& mark, OutgoingStreams& streams)
    : m_raw(zwlr_data_control_manager_v1_create_data_source(&manager)), m_mark(mark),
      // Those who wait for an encoding get it when the source has been replaced, too.
      m_flavours(std::make_shared<OfferedFlavours>(*QCoreApplication::instance(), content)),
      m_streams(streams) {
    zwlr_data_control_source_v1_add_listener(m_raw, &Listeners::source, this);
    for (std::size_t i = 0; i < m_flavours->size(); ++i) {
        zwlr_data_control_source_v1_offer(m_raw, (*m_flavours)[i].target.constData());
    }
    zwlr_data_control_source_v1_offer(m_raw, mark.constData());
}

DataControlSource::~DataControlSource() {
    zwlr_data_control_source_v1_destroy(m_raw);
}

void DataControlSource::send(const QByteArray& type, FileDescriptor receiver) {
    for (std::size_t i = 0; i < m_flavours->size(); ++i) {
        if ((*m_flavours)[i].target == type) {
            OutgoingStream& stream = m_streams.open(std::move(receiver));
            m_flavours->bytesOf(i, [stream = QPointer(&stream)](const QByteArray& bytes) {
                if (stream) {
                    stream->send(bytes, readerSilence);
                }
            });
            return;
        }
    }
}

} // namespace corvatto
