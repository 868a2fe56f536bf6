// What fetching a document may take.
#pragma once

#include <QtGlobal>

#include <chrono>

namespace corvatto {

struct FetchLimits {
    std::chrono::milliseconds request{10'000};  // without a byte from the server
    std::chrono::milliseconds resource{20'000}; // in all, waiting for the network included
    std::chrono::milliseconds firstRetry{500};  // before the network is tried again; doubles each time
    qint64 bytes = 1'048'576;                   // of the body; a longer one ends the download at once
};

} // namespace corvatto
