// The clipboard of a Wayland desktop, by the data-control protocol.
//
// Content survives the exit of its owner. The compositor tells of an exit and of a clear by the same event,
// an empty clipboard, so other signs decide, and without them it counts as a clear: what a password manager
// has removed must not come back, while what an exiting program takes with it is still in the history.
// Content is offered again, and no count rises, when the program that delivered it
//  - ends within a second of that event, and is no tool that was started for this one copy, which ends just
//    because somebody clears the clipboard; its process is known by what it has sent; or
//  - is an X program, and the X server says that it has exited; or when
//  - the whole seat was gone.
// What cannot be known: whether a program that ends right after an explicit clear has cleared on purpose.
// Then its content comes back, unless it was marked as secret: of that nothing was ever read.
#pragma once

#include "platform/SnapshotPasteboard.h"
#include "platform/wayland/DataControl.h"
#include "platform/wayland/DataControlReader.h"

namespace corvatto {

// Main thread.
class WaylandPasteboard : public SnapshotPasteboard {
public:
    // The display name of the application in front; asked when a change is announced.
    using NameOfSource = std::function<QString()>;

    // Whether X programs take part in the session, by an X server of the compositor's.
    enum class XPrograms { none, possible };

    // The connection, and what the function refers to, outlive the pasteboard. `dataControl` is the name of
    // the interface that the compositor was found to accept.
    WaylandPasteboard(WaylandConnection& connection, const QByteArray& dataControl, NameOfSource nameOfSource,
                      const ClipboardReadLimits& limits = {}, XPrograms xPrograms = XPrograms::possible);
    ~WaylandPasteboard() override;

    // Calls `done` at once, from the event loop: there is nobody to hand anything to. A clipboard manager
    // that wants to keep the content has read it by now.
    void handOver(std::function<void()> done) override;

private:
    void selected(const DataControl::Selection& selection);
    void announced(const std::shared_ptr<DataControlOffer>& offer);
    void readFrom(const std::shared_ptr<DataControlOffer>& offer, Meaning meaning, bool isNew);
    void wentEmpty();
    void decideAboutEmpty();
    void takeForClear();
    void seatGone();
    void offer(const ClipboardContent& content) override;
    void overtaken() override;
    void wasRead() override;

    WaylandConnection& m_connection;
    NameOfSource m_nameOfSource;
    XwaylandOwners m_xOwners;
    XPrograms m_xPrograms;
    bool m_isFirstSeat = true;
    bool m_isEmpty = false;             // and it has not been decided what that means
    std::shared_ptr<OwnerLife> m_owner; // of what was read last; null when nothing is known
    QTimer m_endOfOwner;                // the time that it has to end after the clipboard went empty
    QTimer m_offerAgain;
    QTimer m_rereading;                         // for as long as announcements count as quick
    std::shared_ptr<DataControlOffer> m_latest; // the last quick one, not read yet
    Meaning m_meaning = Meaning::noChange;      // of that, or of what is being read
    DataControl m_control;
};

} // namespace corvatto
