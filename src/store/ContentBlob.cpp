#include "ContentBlob.h"

namespace corvatto {

ContentBlob::~ContentBlob() {
    close();
}

void ContentBlob::close() {
    sqlite3_blob_close(m_blob);
    m_blob = nullptr;
}

bool ContentBlob::open(qint64 id) {
    const int status = m_blob != nullptr
                           ? sqlite3_blob_reopen(m_blob, id)
                           : sqlite3_blob_open(m_db, "main", "clipboard_items", "content", id, 0, &m_blob);
    if (status != SQLITE_OK) {
        close(); // it cannot be opened again
    }
    return status == SQLITE_OK;
}

qsizetype ContentBlob::size() const {
    return sqlite3_blob_bytes(m_blob);
}

QByteArray ContentBlob::beginning(qsizetype length) const {
    QByteArray bytes(length, Qt::Uninitialized);
    const int status = sqlite3_blob_read(m_blob, bytes.data(), static_cast<int>(length), 0);
    return status == SQLITE_OK ? bytes : QByteArray();
}

} // namespace corvatto
