#include "platform/wayland/DataControlOffer.h"

#include "platform/ClipboardReadPlan.h"
#include "wlr-data-control-unstable-v1-client-protocol.h"

#include <utility>

namespace corvatto {
namespace {

constexpr qsizetype mostTypes = 1024;

} // namespace

struct DataControlOffer::Listeners {
    static void type(void* data, zwlr_data_control_offer_v1* /*raw*/, const char* name) {
        auto& types = static_cast<DataControlOffer*>(data)->m_types;
        if (types.size() < mostTypes || name == ClipboardReadPlan::secrecyHintTarget) {
            types.append(name);
        }
    }
    static constexpr zwlr_data_control_offer_v1_listener offer{type};
};

DataControlOffer::DataControlOffer(zwlr_data_control_offer_v1* raw) : m_raw(raw) {
    zwlr_data_control_offer_v1_add_listener(raw, &Listeners::offer, this);
}

DataControlOffer::~DataControlOffer() {
    end();
}

void DataControlOffer::receive(const QByteArray& type, int descriptor) {
    if (isCurrent()) {
        zwlr_data_control_offer_v1_receive(m_raw, type.constData(), descriptor);
    }
}

void DataControlOffer::end() {
    if (isCurrent()) {
        zwlr_data_control_offer_v1_destroy(std::exchange(m_raw, nullptr));
    }
}

} // namespace corvatto
