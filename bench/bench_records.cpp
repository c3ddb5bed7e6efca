// What it costs to save and open a project: one source record with everything in it.

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/SourceRecords.h>

#include <QDomDocument>
#include <QXmlStreamWriter>

#include <benchmark/benchmark.h>

namespace {

QString written(const tagTavloPresentSourceInfo& source)
{
    QString text;
    QXmlStreamWriter writer(&text);
    TavloPresentUtil::writeXmlWriter(writer, QStringLiteral("source"), source);
    return text;
}

void writeSource(benchmark::State& state)
{
    const tagTavloPresentSourceInfo source;
    for (auto _ : state)
        benchmark::DoNotOptimize(written(source));
}
BENCHMARK(writeSource)->Unit(benchmark::kMicrosecond);

void readSource(benchmark::State& state)
{
    const QString text = written({});
    for (auto _ : state) {
        QDomDocument document;
        document.setContent(text);
        QDomElement root = document.documentElement();
        tagTavloPresentSourceInfo source;
        TavloPresentUtil::readDomElement(root, source);
        benchmark::DoNotOptimize(source);
    }
}
BENCHMARK(readSource)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
