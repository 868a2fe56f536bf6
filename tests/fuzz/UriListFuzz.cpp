#include "Fuzz.h"
#include "base/FilePath.h"
#include "base/UriList.h"

using namespace corvatto;

// Whatever a list says, what comes out are absolute paths that a list of our own brings back.
void fuzz::uriList(const QByteArray& input) {
    for (const QList<QUrl>& urls : {fileURLsFromUriList(input), fileURLsFromGnomeCopiedFiles(input)}) {
        for (const QUrl& url : urls) {
            const QByteArray path = pathOf(url);
            fuzz::require(path.startsWith('/') && !path.contains('\0') && nativePath(pathLine(path)) == path);
        }
        fuzz::require(fileURLsFromUriList(uriListFromFileURLs(urls)) == urls);
        fuzz::require(fileURLsFromGnomeCopiedFiles(copiedFilesFromFileURLs(urls, false)) == urls);
    }
}
