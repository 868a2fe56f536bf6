// Does not compile: only the process that fetches sees Qt Network.
#include <QNetworkReply>
