// Why the update document could not be fetched: a domain, a code within it and a description for the user.
// Thrown while the document is fetched, and caught by the update checker, which lets none out.
#pragma once

#include <QString>

namespace corvatto {

struct FetchError {
    // The codes of the domain "NSURLErrorDomain" that are in use.
    enum Code {
        unknown = -1,
        cancelled = -999,
        timedOut = -1001,
        cannotFindHost = -1003,
        cannotConnectToHost = -1004,
        networkConnectionLost = -1005,
        tooManyRedirects = -1007,
        notConnectedToInternet = -1009,
        badServerResponse = -1011,
        secureConnectionRequired = -1022,
        dataLengthExceedsMaximum = -1103,
        secureConnectionFailed = -1200,
    };

    QString domain;
    int code = unknown;
    QString description; // one sentence in the language of the user interface

    // An error in loading. `detail`, when there is any, is added to the description.
    static FetchError loading(Code code, const QString& detail = {});

    // The document arrived, but cannot be decoded.
    static FetchError undecodable();
};

} // namespace corvatto
