#include "base/Worker.h"

#include <QCoreApplication>

namespace corvatto {
namespace {

// Ends its work before the program takes down what the work needs, such as Qt's image formats.
class Pool : public QThreadPool {
public:
    explicit Pool(int threads, void (*waitAtExit)()) {
        setMaxThreadCount(threads);
        qAddPostRoutine(waitAtExit);
    }
};

} // namespace

QThreadPool& workers() {
    static Pool pool(QThread::idealThreadCount(), [] { workers().waitForDone(); });
    return pool;
}

QThreadPool& diskWorker() {
    static Pool pool(1, [] { diskWorker().waitForDone(); });
    return pool;
}

} // namespace corvatto
