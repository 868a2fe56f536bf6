#include "platform/wayland/DataControl.h"

#include "wlr-data-control-unstable-v1-client-protocol.h"

#include <QPointer>
#include <QRandomGenerator>

#include <algorithm>
#include <utility>

namespace corvatto {
namespace {

// The first version: in the second, compositors tell of the primary selection as well.
constexpr quint32 managerVersion = 1;

// Offers that are introduced and then not said to be anything.
constexpr std::size_t mostIntroduced = 8;

} // namespace

struct DataControl::Listeners {
    static DataControl& self(void* data) { return *static_cast<DataControl*>(data); }

    static void introduced(void* data, zwlr_data_control_device_v1* /*device*/,
                           zwlr_data_control_offer_v1* offer) {
        self(data).introduced(offer);
    }
    static void selected(void* data, zwlr_data_control_device_v1* /*device*/,
                         zwlr_data_control_offer_v1* offer) {
        self(data).selectionChanged(offer);
    }
    static void finished(void* data, zwlr_data_control_device_v1* /*device*/) { self(data).detach(); }
    static void primarySelected(void* data, zwlr_data_control_device_v1* /*device*/,
                                zwlr_data_control_offer_v1* offer) {
        self(data).take(offer); // and let it go
    }
    static constexpr zwlr_data_control_device_v1_listener device{introduced, selected, finished,
                                                                 primarySelected};
};

DataControl::DataControl(WaylandConnection& connection, const QByteArray& interface, Selected selected,
                         std::function<void()> seatGone)
    : m_connection(connection), m_selected(std::move(selected)), m_seatGone(std::move(seatGone)),
      m_manager(connection.bind<zwlr_data_control_manager_v1>(
          interface, zwlr_data_control_manager_v1_interface, managerVersion)),
      m_markPrefix("application/x-corvatto-" +
                   QByteArray::number(QRandomGenerator::system()->generate64(), 16)) {
    connect(&connection, &WaylandConnection::seatChanged, this, [this] {
        detach();
        attachToSeat();
    });
    attachToSeat();
}

DataControl::~DataControl() {
    m_seatGone = [] {
    };
    detach();
    m_sources.clear();
    if (m_manager != nullptr) {
        zwlr_data_control_manager_v1_destroy(m_manager);
    }
    m_connection.flush();
}

void DataControl::attachToSeat() {
    if (m_manager == nullptr || m_connection.seat() == nullptr) {
        return;
    }
    m_device = zwlr_data_control_manager_v1_get_data_device(m_manager, m_connection.seat());
    zwlr_data_control_device_v1_add_listener(m_device, &Listeners::device, this);
    // What the compositor tells before it answers this was there before us. Some tell nothing of an empty
    // clipboard.
    m_isNewToSeat = true;
    m_wasTold = false;
    m_connection.sync([self = QPointer(this), device = m_device] {
        if (self && self->m_device == device) {
            if (!self->m_wasTold) {
                self->selectionChanged(nullptr);
            }
            self->m_isNewToSeat = false;
        }
    });
}

void DataControl::detach() {
    if (m_device == nullptr) {
        return;
    }
    m_introduced.clear();
    if (m_current) {
        std::exchange(m_current, nullptr)->end();
    }
    zwlr_data_control_device_v1_destroy(std::exchange(m_device, nullptr));
    m_pending = nullptr;
    m_seatGone();
}

void DataControl::introduced(zwlr_data_control_offer_v1* offer) {
    if (m_introduced.size() >= mostIntroduced) {
        m_introduced.erase(m_introduced.begin());
    }
    m_introduced.push_back(std::make_unique<DataControlOffer>(offer));
}

std::unique_ptr<DataControlOffer> DataControl::take(zwlr_data_control_offer_v1* offer) {
    const auto found = std::find_if(m_introduced.begin(), m_introduced.end(),
                                    [&](const auto& each) { return each->raw() == offer; });
    if (offer == nullptr || found == m_introduced.end()) {
        return nullptr;
    }
    auto taken = std::move(*found);
    m_introduced.erase(found);
    return taken;
}

void DataControl::selectionChanged(zwlr_data_control_offer_v1* raw) {
    m_wasTold = true;
    if (m_current) {
        m_current->end();
    }
    m_current = take(raw);
    const QByteArrayList types = m_current ? m_current->types() : QByteArrayList();
    const auto mark = std::find_if(types.cbegin(), types.cend(),
                                   [this](const QByteArray& type) { return type.startsWith(m_markPrefix); });
    if (mark != types.cend()) {
        std::exchange(m_current, nullptr)->end();
        if (m_pending != nullptr && m_pending->mark() == *mark) {
            m_pending = nullptr;
        }
    } else if (m_pending != nullptr) {
        m_wasOvertaken = true;
    } else {
        m_selected({m_current, m_isNewToSeat});
    }
}

void DataControl::offer(const ClipboardContent& content) {
    if (m_device == nullptr) {
        return;
    }
    const QByteArray mark = m_markPrefix + '-' + QByteArray::number(++m_writes);
    const auto& source =
        m_sources.emplace_back(std::make_unique<DataControlSource>(*m_manager, content, mark, m_streams));
    connect(source.get(), &DataControlSource::cancelled, this,
            [this, ended = source.get()] { cancelled(*ended); });
    m_pending = source.get();
    m_wasOvertaken = false;
    // The source before may still be asked by somebody; it goes when the compositor cancels it.
    zwlr_data_control_device_v1_set_selection(m_device, source->raw());
    m_connection.sync([self = QPointer(this), mark] {
        // A compositor may not announce a write to whom it came from.
        if (self && self->m_pending != nullptr && self->m_pending->mark() == mark) {
            self->m_pending = nullptr;
        }
    });
}

void DataControl::cancelled(const DataControlSource& source) {
    const bool wasRefused = m_pending == &source;
    std::erase_if(m_sources, [&](const auto& each) { return each.get() == &source; });
    if (wasRefused) {
        m_pending = nullptr;
        if (m_wasOvertaken) {
            m_selected({m_current, false});
        }
    }
}

} // namespace corvatto
