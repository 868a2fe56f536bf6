// The clipboard of a Wayland seat by the data-control protocol, which tells of every copy and takes every
// write whatever window has the focus. The primary selection, of marked text, is left alone.
//
// Requests to the compositor and what other programs do cross on the wire. While a write of ours has not been
// announced, all other announcements are older, and not passed on.
#pragma once

#include "platform/wayland/DataControlOffer.h"
#include "platform/wayland/DataControlSource.h"

#include <functional>
#include <memory>
#include <vector>

struct zwlr_data_control_device_v1;

namespace corvatto {

// Main thread.
class DataControl : public QObject {
    Q_OBJECT

public:
    struct Selection {
        std::shared_ptr<DataControlOffer> offer; // null: the clipboard is empty
        bool wasThereBefore; // told because we have come to this seat, and not because of a change
    };
    using Selected = std::function<void(const Selection& selection)>;

    // `interface` is the name of the protocol's manager, which has two; the compositor offers it. `selected`
    // is called from the event loop, and never for writes of our own; `seatGone` when there is no clipboard
    // any more, until another seat comes. The connection outlives this object.
    DataControl(WaylandConnection& connection, const QByteArray& interface, Selected selected,
                std::function<void()> seatGone);
    ~DataControl() override;

    // Takes the clipboard over from whoever has it.
    void offer(const ClipboardContent& content);

private:
    struct Listeners;

    void attachToSeat();
    void detach();
    void introduced(zwlr_data_control_offer_v1* offer);
    std::unique_ptr<DataControlOffer> take(zwlr_data_control_offer_v1* offer);
    void selectionChanged(zwlr_data_control_offer_v1* raw);
    void cancelled(const DataControlSource& source);

    WaylandConnection& m_connection;
    Selected m_selected;
    std::function<void()> m_seatGone;
    zwlr_data_control_manager_v1* m_manager;
    zwlr_data_control_device_v1* m_device = nullptr;
    bool m_isNewToSeat = false;                                  // until all is told that was there before
    bool m_wasTold = false;                                      // anything by this seat
    std::vector<std::unique_ptr<DataControlOffer>> m_introduced; // not yet said what they are offered for
    std::shared_ptr<DataControlOffer> m_current;                 // of another program
    std::vector<std::unique_ptr<DataControlSource>> m_sources;   // until they are cancelled
    OutgoingStreams m_streams;
    QByteArray m_markPrefix;
    quint64 m_writes = 0;
    const DataControlSource* m_pending = nullptr; // our last write, until it is announced or cancelled
    bool m_wasOvertaken = false;                  // m_current was announced meanwhile
};

} // namespace corvatto
