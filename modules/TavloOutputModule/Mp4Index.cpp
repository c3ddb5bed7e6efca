#include "TavloOutputModule/Mp4Index.h"

#include "TavloOutputModule/Mp4Boxes.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <vector>

namespace tavlo {

namespace {

// No file of a programme goes beyond these; within them no sum or product overflows.
constexpr qint64 largestHeader = qint64{64} << 20; // bytes of a movie or fragment header
constexpr quint32 largestScale = 1 << 22;          // steps of time in a second
constexpr qint64 longestTime = qint64{1} << 40;    // of a track, in its steps

struct Sample
{
    qint64 dts = 0; ///< in the track's time scale
    quint32 duration = 0;
    qint32 offset = 0; ///< from dts to pts
    quint32 size = 0;  ///< bytes
    bool sync = false;
};

/// Samples that lie one behind the other in the file.
struct Chunk
{
    quint64 position = 0;
    quint32 count = 0;
};

struct Track
{
    QByteArrayView box; ///< content of its `trak`
    quint32 id = 0;
    quint32 timescale = 1;
    quint32 defaultDuration = 0, defaultSize = 0, defaultFlags = 0;
    std::vector<Sample> samples;
    std::vector<Chunk> chunks;

    qint64 end() const { return samples.empty() ? 0 : samples.back().dts + samples.back().duration; }
};

struct Movie
{
    QByteArray box;      ///< content of `moov`; the tracks look into it
    qint64 position = 0; ///< of the whole box in the file
    quint32 timescale = 1000;
    quint64 fileSize = 0;
    quint64 dataLeft = 0; ///< bytes of the file that may still be samples' data
    std::vector<Track> tracks;

    Track* track(quint32 id)
    {
        const auto found = std::ranges::find(tracks, id, &Track::id);
        return found != tracks.end() ? &*found : nullptr;
    }
};

constexpr quint32 notSync = 0x10000; // of a sample's flags

// Reading

bool isWide(QByteArrayView fullBox) { return !fullBox.isEmpty() && fullBox.front() == 1; }

/// Behind version, flags and the two times of creation, which are as wide as the version says.
Mp4Reader behindTimes(QByteArrayView fullBox)
{
    Mp4Reader reader(fullBox);
    reader.skip(isWide(fullBox) ? 20 : 12);
    return reader;
}

quint32 readScale(QByteArrayView header) { return qBound(1U, behindTimes(header).u32(), largestScale); }

void readTracks(Movie& movie)
{
    movie.timescale = readScale(findBox(movie.box, "mvhd"));
    Mp4Reader reader(movie.box);
    while (const auto box = reader.box()) {
        if (box->type != "trak")
            continue;
        Track track;
        track.box = box->content;
        track.id = behindTimes(findBox(track.box, "tkhd")).u32();
        track.timescale = readScale(findBox(findBox(track.box, "mdia"), "mdhd"));
        movie.tracks.push_back(std::move(track));
    }
    Mp4Reader extends(findBox(movie.box, "mvex"));
    while (const auto box = extends.box()) {
        Mp4Reader fields(box->content);
        fields.skip(4);
        Track* const track = box->type == "trex" ? movie.track(fields.u32()) : nullptr;
        if (!track)
            continue;
        fields.skip(4); // description
        track->defaultDuration = fields.u32();
        track->defaultSize = fields.u32();
        track->defaultFlags = fields.u32();
    }
}

/// Defaults of one track in one fragment.
struct FragmentDefaults
{
    quint32 duration, size, flags;
    quint64 base;
    qint64 dts;
};

/// False when it tells of data that the file does not hold.
bool readRun(QByteArrayView run, FragmentDefaults& defaults, Movie& movie, Track& track)
{
    Mp4Reader reader(run);
    const quint32 flags = reader.u32() & 0xffffff;
    const quint32 count = reader.u32();
    const qint64 offset = (flags & 0x1) ? static_cast<qint32>(reader.u32()) : 0;
    const quint32 firstFlags = (flags & 0x4) ? reader.u32() : 0;
    Chunk chunk{defaults.base + static_cast<quint64>(offset), 0};
    quint64 end = chunk.position;
    const bool listed = (flags & 0xf00) != 0;
    for (; chunk.count < count && (reader.left() > 0 || !listed); ++chunk.count) {
        Sample sample;
        sample.dts = defaults.dts;
        sample.duration = (flags & 0x100) ? reader.u32() : defaults.duration;
        sample.size = (flags & 0x200) ? reader.u32() : defaults.size;
        quint32 sampleFlags = (flags & 0x400) ? reader.u32() : defaults.flags;
        if (chunk.count == 0 && (flags & 0x4))
            sampleFlags = firstFlags;
        sample.offset = (flags & 0x800) ? static_cast<qint32>(reader.u32()) : 0;
        sample.sync = !(sampleFlags & notSync);
        const quint64 taken = qMax(sample.size, 1U); // so that their number has a limit, too
        if (end > movie.fileSize || taken > movie.fileSize - end || taken > movie.dataLeft || sample.dts > longestTime)
            return false;
        end += sample.size;
        movie.dataLeft -= taken;
        defaults.dts += sample.duration;
        track.samples.push_back(sample);
    }
    if (chunk.count > 0)
        track.chunks.push_back(chunk);
    return true;
}

bool readTrackFragment(QByteArrayView box, quint64 fragmentPosition, Movie& movie)
{
    const QByteArrayView header = findBox(box, "tfhd");
    Mp4Reader reader(header);
    const quint32 flags = reader.u32();
    Track* const track = movie.track(reader.u32());
    if (!track)
        return true;
    FragmentDefaults defaults{track->defaultDuration, track->defaultSize, track->defaultFlags, fragmentPosition,
                              track->end()};
    if (flags & 0x1)
        defaults.base = reader.u64();
    if (flags & 0x2)
        reader.skip(4);
    if (flags & 0x8)
        defaults.duration = reader.u32();
    if (flags & 0x10)
        defaults.size = reader.u32();
    if (flags & 0x20)
        defaults.flags = reader.u32();
    const QByteArrayView time = findBox(box, "tfdt");
    if (!time.isEmpty()) {
        Mp4Reader fields(time);
        fields.skip(4);
        defaults.dts = static_cast<qint64>(qMin(fields.sized(isWide(time)), quint64{longestTime} + 1));
    }
    if (!track->samples.empty()) // what the last sample of a fragment lasts is known with the next
        track->samples.back().duration =
            static_cast<quint32>(qMax<qint64>(defaults.dts - track->samples.back().dts, 0));
    Mp4Reader runs(box);
    while (const auto run = runs.box())
        if (run->type == "trun" && !readRun(run->content, defaults, movie, *track))
            return false;
    return true;
}

bool readFragment(QByteArrayView content, qint64 position, Movie& movie)
{
    Mp4Reader boxes(content);
    while (const auto box = boxes.box())
        if (box->type == "traf" && !readTrackFragment(box->content, static_cast<quint64>(position), movie))
            return false;
    return true;
}

/// False when there are no fragments, or others than a whole file has.
bool readFile(QFile& file, Movie& movie)
{
    movie.fileSize = movie.dataLeft = static_cast<quint64>(file.size());
    qint64 position = 0;
    while (file.seek(position)) {
        const QByteArray head = file.read(16);
        if (head.size() < 8)
            break;
        Mp4Reader reader(head);
        quint64 size = reader.u32();
        const QByteArrayView type = QByteArrayView(head).sliced(4, 4);
        reader.skip(4);
        const bool wide = size == 1;
        if (wide)
            size = reader.u64();
        const qint64 headBytes = wide ? 16 : 8;
        if (size < static_cast<quint64>(headBytes) || size > movie.fileSize - static_cast<quint64>(position))
            break; // cut off
        const bool isMovie = type == "moov", isFragment = type == "moof";
        if ((isMovie || isFragment) && static_cast<qint64>(size) <= largestHeader) {
            file.seek(position + headBytes);
            const QByteArray content = file.read(static_cast<qint64>(size) - headBytes);
            if (isMovie && movie.box.isEmpty()) {
                movie.box = content;
                movie.position = position;
                readTracks(movie);
            } else if (isFragment && !readFragment(content, position, movie)) {
                return false;
            }
        }
        position += static_cast<qint64>(size);
    }
    return std::ranges::any_of(movie.tracks, [](const Track& track) { return !track.samples.empty(); });
}

// Writing

/// A header box with another duration: it is one number that stands somewhere behind the two times of creation.
void writeWithDuration(Mp4Writer& writer, const char* type, QByteArrayView content, qsizetype numbersBefore,
                       quint64 duration)
{
    const bool wide = isWide(content);
    QByteArray changed = content.toByteArray();
    const qsizetype at = (wide ? 20 : 12) + 4 * numbersBefore;
    if (changed.size() >= at + (wide ? 8 : 4)) {
        if (wide)
            qToBigEndian(duration, changed.data() + at);
        else
            qToBigEndian(static_cast<quint32>(duration), changed.data() + at);
    }
    writer.box(type, [&] { writer.bytes(changed); });
}

/// Pairs of a count and a value, for values that come in rows.
template <class Value>
void writeRows(Mp4Writer& writer, const char* type, quint8 version, const Track& track, Value valueOf)
{
    writer.fullBox(type, version, [&] {
        const qsizetype countAt = writer.data.size();
        writer.u32(0);
        quint32 rows = 0;
        for (size_t i = 0; i < track.samples.size(); ++rows) {
            const quint32 value = valueOf(track.samples[i]);
            const size_t first = i;
            while (i < track.samples.size() && valueOf(track.samples[i]) == value)
                ++i;
            writer.u32(i - first);
            writer.u32(value);
        }
        qToBigEndian(rows, writer.data.data() + countAt);
    });
}

void writeSampleTable(Mp4Writer& writer, const Track& track, QByteArrayView oldTable)
{
    const auto& samples = track.samples;
    writer.box("stsd", [&] { writer.bytes(findBox(oldTable, "stsd")); });
    writeRows(writer, "stts", 0, track, [](const Sample& sample) { return sample.duration; });
    if (std::ranges::any_of(samples, [](const Sample& sample) { return sample.offset != 0; }))
        writeRows(writer, "ctts", 1, track, [](const Sample& sample) { return static_cast<quint32>(sample.offset); });
    const auto syncs = std::ranges::count_if(samples, &Sample::sync);
    if (static_cast<size_t>(syncs) < samples.size())
        writer.fullBox("stss", 0, [&] {
            writer.u32(static_cast<quint64>(syncs));
            for (size_t i = 0; i < samples.size(); ++i)
                if (samples[i].sync)
                    writer.u32(i + 1);
        });
    writer.fullBox("stsc", 0, [&] {
        writer.u32(track.chunks.size());
        for (size_t i = 0; i < track.chunks.size(); ++i) {
            writer.u32(i + 1);
            writer.u32(track.chunks[i].count);
            writer.u32(1);
        }
    });
    writer.fullBox("stsz", 0, [&] {
        writer.u32(0);
        writer.u32(samples.size());
        for (const Sample& sample : samples)
            writer.u32(sample.size);
    });
    writer.fullBox("co64", 0, [&] {
        writer.u32(track.chunks.size());
        for (const Chunk& chunk : track.chunks)
            writer.u64(chunk.position);
    });
}

struct Edit
{
    qint64 delay;    ///< until the track begins, movie's time scale
    qint64 duration; ///< of what it shows, movie's time scale
    qint64 start;    ///< the first shown time, track's time scale
};

/// Samples are shown in another order than they are decoded in, but never far from it.
constexpr size_t reorderLimit = 64;

Edit editOf(const Track& track, quint32 movieScale)
{
    const auto& samples = track.samples;
    const size_t near = qMin(samples.size(), reorderLimit);
    const auto shown = [](const Sample& sample) { return sample.dts + sample.offset; };
    qint64 first = shown(samples.front()), end = first;
    for (size_t i = 0; i < near; ++i) {
        const Sample& late = samples[samples.size() - 1 - i];
        first = qMin(first, shown(samples[i]));
        end = qMax(end, shown(late) + late.duration);
    }
    const qint64 scale = track.timescale;
    return {first * movieScale / scale, ((end - first) * movieScale + scale - 1) / scale, first - samples.front().dts};
}

void writeTrack(Mp4Writer& writer, const Track& track, quint32 movieScale)
{
    const Edit edit = editOf(track, movieScale);
    const QByteArrayView media = findBox(track.box, "mdia");
    writer.box("trak", [&] {
        writeWithDuration(writer, "tkhd", findBox(track.box, "tkhd"), 2,
                          static_cast<quint64>(edit.delay + edit.duration));
        writer.box("edts", [&] {
            writer.fullBox("elst", 1, [&] {
                writer.u32(edit.delay > 0 ? 2 : 1);
                if (edit.delay > 0) {
                    writer.u64(static_cast<quint64>(edit.delay));
                    writer.u64(~quint64{0}); // nothing
                    writer.u32(0x10000);
                }
                writer.u64(static_cast<quint64>(edit.duration));
                writer.u64(static_cast<quint64>(edit.start));
                writer.u32(0x10000);
            });
        });
        writer.box("mdia", [&] {
            Mp4Reader boxes(media);
            while (const auto box = boxes.box()) {
                if (box->type == "mdhd") {
                    writeWithDuration(writer, "mdhd", box->content, 1,
                                      static_cast<quint64>(track.end() - track.samples.front().dts));
                } else if (box->type == "minf") {
                    writer.box("minf", [&] {
                        Mp4Reader inner(box->content);
                        while (const auto part = inner.box()) {
                            if (part->type == "stbl")
                                writer.box("stbl", [&] { writeSampleTable(writer, track, part->content); });
                            else
                                writer.bytes(part->whole);
                        }
                    });
                } else {
                    writer.bytes(box->whole);
                }
            }
        });
    });
}

QByteArray writeMovie(const Movie& movie)
{
    qint64 duration = 0;
    for (const Track& track : movie.tracks)
        if (!track.samples.empty()) {
            const Edit edit = editOf(track, movie.timescale);
            duration = qMax(duration, edit.delay + edit.duration);
        }
    Mp4Writer writer;
    writer.box("moov", [&] {
        writeWithDuration(writer, "mvhd", findBox(movie.box, "mvhd"), 1, static_cast<quint64>(duration));
        for (const Track& track : movie.tracks)
            if (!track.samples.empty())
                writeTrack(writer, track, movie.timescale);
    });
    return writer.data;
}

} // namespace

bool indexFragmentedMp4(const QString& path, QString& error)
{
    QFile file(path);
    Movie movie;
    if (!file.open(QIODevice::ReadWrite)) {
        error = file.errorString();
        return false;
    }
    if (!readFile(file, movie)) {
        error = QStringLiteral("no whole fragments in it");
        return false;
    }
    const qint64 end = file.size();
    const QByteArray index = writeMovie(movie);
    Mp4Writer data;
    data.u32(1); // the size stands behind the type
    data.bytes("mdat");
    data.u64(static_cast<quint64>(end - movie.position));
    const bool written = file.seek(end) && file.write(index) == index.size() && file.flush() &&
                         file.seek(movie.position) && file.write(data.data) == data.data.size() && file.flush();
    if (!written) {
        error = file.errorString();
        file.resize(end);
    }
    return written;
}

} // namespace tavlo
