// The program behind an offer on a Wayland clipboard as a source of clipboard content.
//
// Where an X program may be behind it, that is asked too, before anything else, whether its content is
// secret. Content is taken only from a program that still offers it when all has come: to the reading side, a
// crash looks like the end.
#pragma once

#include "platform/ClipboardReading.h"
#include "platform/wayland/DataControlOffer.h"
#include "platform/wayland/IncomingStream.h"
#include "platform/wayland/OwnerProcess.h"
#include "platform/wayland/XwaylandOwner.h"

#include <QElapsedTimer>

namespace corvatto {

// Main thread.
class DataControlReader : public ClipboardSource {
public:
    // Called with what is known of the owner: when content has come, and before that only if it is an X
    // program.
    using OwnerKnown = std::function<void(std::shared_ptr<OwnerLife> owner)>;

    // The connection and the X owners outlive the reader. `owners` is null where no X programs are possible.
    // `isNew` tells an offer that is announced now from one that was there before us.
    DataControlReader(WaylandConnection& connection, XwaylandOwners* owners,
                      std::shared_ptr<DataControlOffer> offer, std::chrono::milliseconds silenceLimit,
                      bool isNew, OwnerKnown ownerKnown);

    void list(Listed done) override;
    void fetch(const QByteArray& target, qint64 byteLimit, Fetched done) override;
    void ownerGone() override;

private:
    enum class Secrecy { asOffered, secret, unknown }; // of an X program's content

    void whenHandled(std::function<void()> done);
    void askXOwner();
    void tellTypes(Secrecy secrecy);
    void received(IncomingStream::Result result);
    void judge(const IncomingStream::Result& result);
    void finish(TransferOutcome outcome, const QByteArray& bytes = {});

    WaylandConnection& m_connection;
    XwaylandOwners* m_owners;
    std::shared_ptr<DataControlOffer> m_offer;
    std::chrono::milliseconds m_silenceLimit;
    bool m_isNew;
    QElapsedTimer m_sinceAnnounced;
    OwnerKnown m_ownerKnown;
    Secrecy m_secrecy = Secrecy::asOffered;
    std::shared_ptr<XwaylandOwner> m_xOwner;
    std::unique_ptr<IncomingStream> m_stream;
    std::unique_ptr<OwnerProcess> m_exiting; // who has sent the content
    QTimer m_exitLimit;
    Listed m_listed;   // while it is listing
    Fetched m_fetched; // while it is fetching
    QTimer m_xSilence;
    std::shared_ptr<DataControlReader*> m_self; // for answers that may come when this object has gone
};

} // namespace corvatto
