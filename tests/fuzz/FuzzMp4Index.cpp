// Reads arbitrary bytes as an MP4 file in fragments and closes it with an index.
//
// Whatever the bytes hold: nothing crashes; a file that is refused stays as it was; one that is taken keeps its bytes but
// for the sixteen that make its fragments plain data, has its index behind them, and is no file in fragments any more.

#include "TavloOutputModule/Mp4Index.h"

#include <QFile>

#include <algorithm>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    check(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

/// A file in memory, with that content and a name.
class MemoryFile
{
public:
    explicit MemoryFile(QByteArrayView content) : _handle(memfd_create("fuzz", 0))
    {
        check(write(_handle, content.data(), static_cast<size_t>(content.size())) == content.size());
    }
    ~MemoryFile() { close(_handle); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(_handle); }

private:
    const int _handle;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayView before(data, static_cast<qsizetype>(size));
    const MemoryFile file(before);
    QString error;
    if (!tavlo::indexFragmentedMp4(file.path(), error)) {
        check(!error.isEmpty() && contentOf(file.path()) == before);
        return 0;
    }
    const QByteArray after = contentOf(file.path());
    check(after.size() > before.size() && after.sliced(before.size()).sliced(4, 4) == "moov");
    const auto changed = std::ranges::mismatch(before, after).in1 - before.begin();
    const auto last =
        std::mismatch(before.rbegin(), before.rend(), after.rbegin() + (after.size() - before.size())).first;
    check(before.rend() - last - changed <= 16);
    check(!tavlo::indexFragmentedMp4(file.path(), error) && contentOf(file.path()) == after);
    return 0;
}
