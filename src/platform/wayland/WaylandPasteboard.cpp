#include "platform/wayland/WaylandPasteboard.h"

#include <chrono>
#include <utility>

namespace corvatto {
namespace {

using std::chrono::milliseconds;

// An announcement that follows another one within this time is read at its end, and is a change only if the
// content differs: some programs announce one copy several times, and some do so without end.
constexpr milliseconds rereadingDelay{200};

// A program that closes its windows may still have settings to save.
constexpr milliseconds longestExit{1'000};

// A clipboard manager that takes the place of a program that exits does so within some milliseconds.
constexpr milliseconds managersPrecedence{100};

} // namespace

WaylandPasteboard::WaylandPasteboard(WaylandConnection& connection, const QByteArray& dataControl,
                                     NameOfSource nameOfSource, const ClipboardReadLimits& limits,
                                     XPrograms xPrograms)
    : SnapshotPasteboard(limits), m_connection(connection), m_nameOfSource(std::move(nameOfSource)),
      m_xPrograms(xPrograms),
      m_control(
          connection, dataControl, [this](const DataControl::Selection& selection) { selected(selection); },
          [this] { seatGone(); }) {
    m_endOfOwner.setSingleShot(true);
    m_endOfOwner.setInterval(longestExit);
    m_endOfOwner.callOnTimeout([this] { takeForClear(); });
    m_offerAgain.setSingleShot(true);
    m_offerAgain.setInterval(managersPrecedence);
    m_offerAgain.callOnTimeout([this] { offer(content()); });
    m_rereading.setSingleShot(true);
    m_rereading.setInterval(rereadingDelay);
    m_rereading.callOnTimeout([this] {
        if (const auto latest = std::exchange(m_latest, nullptr)) {
            m_rereading.start();
            readFrom(latest, m_meaning, true);
        }
    });
}

WaylandPasteboard::~WaylandPasteboard() {
    dropReading();
}

void WaylandPasteboard::selected(const DataControl::Selection& selection) {
    const bool isFirstSeat = std::exchange(m_isFirstSeat, false);
    m_isEmpty = false;
    m_endOfOwner.stop();
    m_offerAgain.stop();
    if (!selection.wasThereBefore) {
        selection.offer ? announced(selection.offer) : wentEmpty();
    } else if (selection.offer) {
        readFrom(selection.offer, isFirstSeat ? Meaning::noChange : Meaning::aChangeIfDifferent, false);
    } else if (!content().isEmpty()) {
        offer(content()); // this seat takes the place of one that has gone
    }
}

void WaylandPasteboard::announced(const std::shared_ptr<DataControlOffer>& offer) {
    if (!m_rereading.isActive()) {
        m_rereading.start();
        readFrom(offer, Meaning::aChange, true);
        return;
    }
    // What has not been read yet was a change, or was not, and this takes its place.
    if (!isReading() && !m_latest) {
        m_meaning = Meaning::aChangeIfDifferent;
    }
    dropReading();
    m_latest = offer;
}

void WaylandPasteboard::readFrom(const std::shared_ptr<DataControlOffer>& offer, Meaning meaning,
                                 bool isNew) {
    m_owner.reset();
    m_meaning = meaning;
    auto reader = std::make_unique<DataControlReader>(
        m_connection, m_xPrograms == XPrograms::possible ? &m_xOwners : nullptr, offer, limits().silence,
        isNew, [this](std::shared_ptr<OwnerLife> owner) { m_owner = std::move(owner); });
    read(std::move(reader), meaning, m_nameOfSource());
}

void WaylandPasteboard::wasRead() {
    if (m_isEmpty) {
        decideAboutEmpty();
    }
}

void WaylandPasteboard::wentEmpty() {
    m_latest.reset();
    m_isEmpty = true;
    if (isReading()) {
        endReading(); // what has come decides
    } else {
        decideAboutEmpty();
    }
}

void WaylandPasteboard::decideAboutEmpty() {
    if (content().isEmpty()) {
        m_isEmpty = false;
    } else if (!m_owner) {
        takeForClear();
    } else if (m_owner->hasExited()) {
        m_offerAgain.start();
    } else {
        m_owner->onExit = [this] {
            if (m_isEmpty) {
                m_endOfOwner.stop();
                m_offerAgain.start();
            }
        };
        m_endOfOwner.start();
    }
}

void WaylandPasteboard::takeForClear() {
    m_isEmpty = false;
    m_owner.reset();
    emptied();
}

void WaylandPasteboard::seatGone() {
    m_isEmpty = false;
    m_isFirstSeat = false;
    m_endOfOwner.stop();
    m_offerAgain.stop();
    m_rereading.stop();
    m_latest.reset();
    endReading();
}

void WaylandPasteboard::offer(const ClipboardContent& content) {
    m_isEmpty = false;
    m_owner.reset();
    m_control.offer(content);
}

void WaylandPasteboard::overtaken() {
    m_isEmpty = false;
    m_endOfOwner.stop();
    m_offerAgain.stop();
    m_rereading.stop();
    m_latest.reset();
    m_owner.reset();
}

void WaylandPasteboard::handOver(std::function<void()> done) {
    QTimer::singleShot(0, &m_connection, std::move(done));
}

} // namespace corvatto
