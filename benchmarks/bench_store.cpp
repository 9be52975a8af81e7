// The safe store, compared with QSaveFile. QSaveFile syncs the file to disk before it renames it,
// but not the rename itself; for the same durability the folder is synced here.

#include "utl_file.h"

#include <QSaveFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

const std::string kContent = "[NVR]\nAddress 10.0.0.2\nPort 81\n";

// In the working directory: temporary folders are often in memory, where syncing does nothing.
class Folder {
public:
    std::string path() const { return d_folder.path().toStdString(); }

private:
    QTemporaryDir d_folder{"bench_store-XXXXXX"};
};

void Store_core(benchmark::State& state) {
    const Folder folder;
    const std::string path = folder.path() + "/Settings";
    for (auto _ : state) {
        if (!utl::File::createFromMemSafe(path, kContent.data(), kContent.size()))
            state.SkipWithError("not stored");
    }
}

void Store_QSaveFile(benchmark::State& state) {
    const Folder folder;
    const std::string path = folder.path() + "/Settings";
    for (auto _ : state) {
        QSaveFile file(QString::fromStdString(path));
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(kContent.data(), static_cast<qint64>(kContent.size())) < 0 || !file.commit())
            state.SkipWithError("not stored");
        const int handle = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        fsync(handle);
        close(handle);
    }
}

BENCHMARK(Store_core)->UseRealTime();
BENCHMARK(Store_QSaveFile)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
