#include "platform/wayland/DataControlReader.h"

#include <utility>

namespace corvatto {

DataControlReader::DataControlReader(WaylandConnection& connection, XwaylandOwners* owners,
                                     std::shared_ptr<DataControlOffer> offer,
                                     std::chrono::milliseconds silenceLimit, bool isNew,
                                     OwnerKnown ownerKnown)
    : m_connection(connection), m_owners(owners), m_offer(std::move(offer)), m_silenceLimit(silenceLimit),
      m_isNew(isNew), m_ownerKnown(std::move(ownerKnown)),
      m_self(std::make_shared<DataControlReader*>(this)) {
    m_sinceAnnounced.start();
    m_xSilence.setSingleShot(true);
    m_xSilence.setInterval(m_silenceLimit);
    m_xSilence.callOnTimeout([this] { tellTypes(Secrecy::unknown); });
    m_exitLimit.setSingleShot(true);
    m_exitLimit.setInterval(m_silenceLimit);
    m_exitLimit.callOnTimeout([this] {
        if (const auto exited = m_exiting ? m_exiting->onExit : nullptr) {
            exited(); // or as good as that
        }
    });
}

// Calls `done` when the compositor has told everything that it knows by now. Twice asked: it may look at us
// before it looks at a program that has gone.
void DataControlReader::whenHandled(std::function<void()> done) {
    m_connection.sync([this, self = std::weak_ptr(m_self), done = std::move(done)] {
        if (!self.expired()) {
            m_connection.sync([self, done] {
                if (!self.expired()) {
                    done();
                }
            });
        }
    });
}

void DataControlReader::list(Listed done) {
    m_listed = std::move(done);
    if (m_owners == nullptr || m_xOwner || m_offer->offers(ClipboardReadPlan::secrecyHintTarget)) {
        whenHandled([this] { tellTypes(m_secrecy); });
    } else {
        askXOwner();
    }
}

void DataControlReader::askXOwner() {
    m_xSilence.start();
    m_owners->find([this, self = std::weak_ptr(m_self)](std::shared_ptr<XwaylandOwner> owner) {
        if (self.expired()) {
            return;
        }
        if (!owner) {
            tellTypes(Secrecy::asOffered);
            return;
        }
        m_xOwner = std::move(owner);
        m_ownerKnown(m_xOwner);
        m_xOwner->askWhetherSecret(m_silenceLimit, [this, self](bool isSecret) {
            if (!self.expired()) {
                tellTypes(isSecret ? Secrecy::secret : Secrecy::asOffered);
            }
        });
    });
}

void DataControlReader::tellTypes(Secrecy secrecy) {
    const Listed listed = std::exchange(m_listed, nullptr);
    if (!listed) {
        return; // the answer is too late
    }
    m_xSilence.stop();
    m_secrecy = secrecy;
    QByteArrayList types = m_offer->types();
    if (m_secrecy != Secrecy::asOffered) {
        types.prepend(ClipboardReadPlan::secrecyHintTarget);
    }
    listed(types);
}

void DataControlReader::fetch(const QByteArray& target, qint64 byteLimit, Fetched done) {
    m_fetched = std::move(done);
    if (m_secrecy != Secrecy::asOffered && target == ClipboardReadPlan::secrecyHintTarget) {
        const bool isSecret = m_secrecy == Secrecy::secret;
        whenHandled([this, isSecret] {
            finish(isSecret ? TransferOutcome::complete : TransferOutcome::timedOut,
                   isSecret ? QByteArray("secret") : QByteArray());
        });
        return;
    }
    IncomingStream::Ends ends = IncomingStream::newEnds();
    if (!ends.ours.isOpen() || !m_offer->isCurrent()) {
        whenHandled([this] { finish(TransferOutcome::refused); });
        return;
    }
    m_offer->receive(target, ends.theirs.number()); // the connection keeps a duplicate until it is sent
    m_connection.flush();
    m_stream = std::make_unique<IncomingStream>(
        std::move(ends.ours), byteLimit, m_silenceLimit,
        [this](IncomingStream::Result result) { received(std::move(result)); });
}

void DataControlReader::received(IncomingStream::Result result) {
    if (result.outcome != TransferOutcome::complete) {
        finish(result.outcome);
        return;
    }
    // A program that crashes closes its descriptors one after the other, the end of the content perhaps long
    // before its connection to the compositor. Some programs, on the other hand, have their content sent by a
    // process that exits when all is sent.
    m_exiting = OwnerProcess::watchExiting(result.sender.value_or(0));
    if (!m_exiting) {
        judge(result);
        return;
    }
    m_exiting->onExit = [this, result = std::move(result)] {
        m_exitLimit.stop();
        judge(result);
    };
    m_exitLimit.start();
}

// Whether the content is whole.
void DataControlReader::judge(const IncomingStream::Result& result) {
    whenHandled([this, result] {
        if (!m_offer->isCurrent()) {
            finish(TransferOutcome::refused);
            return;
        }
        if (!m_xOwner) {
            const auto sinceCopy =
                m_isNew ? std::optional(std::chrono::milliseconds(m_sinceAnnounced.elapsed())) : std::nullopt;
            m_ownerKnown(OwnerProcess::watch(result.sender.value_or(0), sinceCopy));
        }
        finish(TransferOutcome::complete, result.bytes);
    });
}

void DataControlReader::ownerGone() {
    m_stream.reset();
    m_exiting.reset();
    if (const Listed listed = std::exchange(m_listed, nullptr)) {
        m_xSilence.stop();
        listed({});
    } else {
        finish(TransferOutcome::refused);
    }
}

void DataControlReader::finish(TransferOutcome outcome, const QByteArray& bytes) {
    m_stream.reset();
    m_exiting.reset();
    m_exitLimit.stop();
    if (const Fetched fetched = std::exchange(m_fetched, nullptr)) {
        fetched(outcome, bytes, {});
    }
}

} // namespace corvatto
