// What another program offers on a Wayland clipboard, until the next selection takes its place.
#pragma once

#include "platform/wayland/WaylandConnection.h"

#include <QByteArrayList>

struct zwlr_data_control_offer_v1;

namespace corvatto {

// Main thread.
class DataControlOffer {
public:
    // Takes over an offer that the compositor has just introduced; its types are told next.
    explicit DataControlOffer(zwlr_data_control_offer_v1* raw);
    ~DataControlOffer();
    DataControlOffer(const DataControlOffer&) = delete;
    DataControlOffer& operator=(const DataControlOffer&) = delete;

    zwlr_data_control_offer_v1* raw() const { return m_raw; }

    // The MIME types. Of thousands not all, but always the mark of secrecy.
    const QByteArrayList& types() const { return m_types; }
    bool offers(const QByteArray& type) const { return m_types.contains(type); }

    // Asks the program to write the bytes of a type to a descriptor, which stays the caller's.
    void receive(const QByteArray& type, int descriptor);

    // Another selection has taken its place. Its program can be asked nothing any more.
    void end();
    bool isCurrent() const { return m_raw != nullptr; }

private:
    struct Listeners;

    zwlr_data_control_offer_v1* m_raw;
    QByteArrayList m_types;
};

} // namespace corvatto
