#pragma once

#include <tavlo/Export.h>
#include <tavlo/TavloPresentChannelID.h>
#include <tavlo/TavloPresentViewLayout.h>
#include <tavlo/TavloTransitionKinds.h>
#include <tavlo/records/AudioRecords.h>
#include <tavlo/records/GraphicsRecords.h>
#include <tavlo/records/RecordTypes.h>

#include <QList>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <utility>

class QDomDocument;
class QDomElement;
class QXmlStreamWriter;
class ITavloAudioPreviewObject;
struct block_t;

/// Something in an XML text that the reader of a record would ignore, guess or could not convert.
struct TavloXmlFinding
{
    int line = 0;   ///< from 1
    int column = 0; ///< from 1, behind the start tag
    QString field;  ///< the path of keys from the record's element down, joined by "/"
    QString text;   ///< what is wrong, in words
};

/// What hosts call around the engines: records in XML, the multi-view's layout, names of channels, presets.
/// All are static and may be called on any thread, two at the same time on different data.
class TAVLO_EXPORT TavloPresentUtil
{
public:
    TavloPresentUtil() = delete;

    // --- records in XML ---

    /// Reads the fields that the element's children name into the record; the others keep what they hold. Unknown
    /// children are skipped and a value that is no number reads as 0. Always true.
    template <TavloRecord T>
    static bool readDomElement(QDomElement& element, T& record);

    /// Adds one entry to the list for each child element: with the defaults where the child is no entry. Always true.
    template <TavloListRecord T>
    static bool readDomElement(QDomElement& element, QList<T>& list);

    /// Writes the record as one element of that name. Always true.
    template <TavloRecord T>
    static bool writeXmlWriter(QXmlStreamWriter& writer, QString name, const T& record);

    /// Writes a list as one element of that name with an element for each entry. Always true.
    template <TavloListRecord T>
    static bool writeXmlWriter(QXmlStreamWriter& writer, QString name, const QList<T>& list);

    /// Reads a whole document whose root is the record. False, with the log line "xml parse err: ", line and column,
    /// for a text that is no XML: the record stays as it was.
    static bool fromXMLString(QString& text, tagTavloShowComponentInfo& record);

    /// A whole document in UTF-8 whose root "param" is the record.
    static QString toXMLString(const tagTavloShowComponentInfo& record);

    /// What a person should know about an XML text that is to be read as a record of that type: unknown and repeated
    /// elements, values that do not convert, list entries and indexes that do not fit. Empty when the reader takes
    /// everything as it stands. A text that is no XML, or an unknown type, is one finding.
    /// \param recordType  such as "tagTavloPresentSourceInfo"
    static QList<TavloXmlFinding> checkXml(const QString& text, const QString& recordType);

    /// The same for an element of a document that `parseXml` made; an element of another document is told without
    /// line and column.
    static QList<TavloXmlFinding> checkDomElement(const QDomElement& element, const QString& recordType);

    /// Reads a text from outside into a document. False, with the fault, for a text that is no XML or nests too deep:
    /// the document is then empty.
    static bool parseXml(const QString& text, QDomDocument& document, TavloXmlFinding& fault);

    /// The types that checkXml knows.
    static QStringList recordTypes();

    /// Whether the record means nothing to open.
    static bool isEmptySource(tagTavloPresentSourceInfo& record);

    // --- the multi-view ---

    /// Computes where the panes stand.
    /// \param count  source panes, at most TavloMixedChannelLimit
    /// \param size   of the whole view, pixels
    /// \param flags  a set of TavloPresentViewLayoutFlag; the columns and the single layout take none
    /// \return for the columns the last index used in `paneRects`, for the single layout 0, else the number of rows
    static int computePresentViewLayoutInfo(TavloPresentViewLayoutType type, int count, QSizeF size,
                                            tagTavloPresentViewLayoutInfo& info, quint32 flags);

    /// The rows of TavloPresentViewLayoutTypeColumns for that many panes.
    static int computePresentViewLayoutInfo_ex_rowNum(TavloPresentViewLayoutType type, int count);

    /// Rows and columns of the grid for that many panes; 1 and 1 for a count without a grid.
    static void prefetchGridNum(int count, int& rows, int& columns);

    /// Width of the grid lines on a view of that size, pixels, at most 4.
    static float getGridLineWidth(QSizeF size);

    // --- names of channels ---

    /// "TCH-S-0" to "TCH-S-11", "PVM", "PGM"; empty for any other channel.
    static QString toPathString(TavloPresentChannelID channelId);

    /// The channel of a path string: 65535 for a text that is none, 0 for one that names no source channel 0 to 63.
    static TavloPresentChannelID fromPathString(const QString& text);

    // --- the library ---

    /// What the library is and stands on, as name and version: "tavlo", "Qt", "FFmpeg".
    static QList<std::pair<QString, QString>> libraryVersions();

    // --- graphics devices ---

    /// The adapters of the machine; the software renderer comes last. Opens each one for a moment: not for the frame
    /// thread.
    static QList<tagTavloGraphicsDevInfo> enumGraphicsDevice();

    /// The first adapter of that interop type, or a record without a name.
    static tagTavloGraphicsDevInfo prefGraphicsDevice(TavloInteropType type, QList<tagTavloGraphicsDevInfo>& list);

    /// The adapter to work with: that of the id, or for -1 and ids beyond the list the best one. A record without a
    /// name means that there is none.
    static tagTavloGraphicsDevInfo getWorkGraphicsDeviceInfo(int id, QList<tagTavloGraphicsDevInfo>& list);

    // --- presets ---

    /// Fills a text's style from preset 1 to 30; others leave it.
    static void loadTextStylePreset(quint32 preset, tagTavloShowTextStyle& style);

    /// Fills the six line colours from preset 1 to 11; others leave them.
    static void loadMusicLRCStylePresent(quint32 preset, tagTavloMusicLRCStyle& style);

    // --- sound ---

    /// Routes the sides of a stereo block, in place; others stay as they are. Exact for 8 and 16 bits. Nothing is
    /// allocated.
    /// \param flags  not read
    /// \return the block
    static block_t* doAudioChannelProcess(TavloPresentSourceAudioChannelProcessType type, unsigned flags,
                                          block_t* block, const tagTavloAudioInfo& format);

    /// Measures the mean level of a block of 16-bit samples; nothing to measure leaves the levels as they are.
    /// \param levels    percent, one for each of up to 8 channels: 0 from -50 dB down, nearly 100 at full scale
    /// \param bytes     of `samples`; the first half of them is looked at
    /// \param bits      of a sample, 0 counts as 16
    /// \param reserved  not read
    /// \param scale     multiplies the level, a channel's volume
    static void updateAudioLevelData(float* levels, const void* samples, unsigned bytes, int channels, int bits,
                                     int reserved, double scale);

    /// The devices that can play sound, under the names that a mix and `pgmAudioDevName` take, the default one first.
    /// Asks the system, which may take a while: not for the frame thread.
    static QStringList soundDevices();

    /// A new mix of channels, closed. The caller ends it with `destroy`.
    static ITavloAudioPreviewObject* createAudioPreviewObject();

    /// Chooses an effect: its parameters and `preset`.
    static void loadAudioChangePreset(TavloAudioChangePreset preset, tagTavloAudioEffectParam& param);

    /// Fills the ten gains from preset 9 to 24, others leave them; always a preamp of 8 dB, ten bands and `preset`.
    static void loadAudioEQPreset(TavloAudioChangePreset preset, tagTavloAudioEffectParam& param);

    /// Fills the record from preset 6 to 8; others leave it.
    static void loadAudioDelayPreset(TavloAudioChangePreset preset, tagTavloAudioProcessParamDelay& param);

    /// Fills the record from preset 1 to 5; others leave it.
    static void loadAudioPitchPreset(TavloAudioChangePreset preset, tagTavloAudioProcessParamPitch& param);

    /// Fills the record from preset 1 to 3; others set `preset` alone.
    static void loadAudioVolcalCutPreset(TavloAudioVocalCutPreset preset, tagTavloAudioProcessParamVolcalCut& param);

    // --- transitions ---

    /// The family of a transition; TavloPresentEffectKindCatalogNone for a number that is none.
    static TavloPresentEffectKindCatalog getEffectCatalog(unsigned kind);

    /// The numbers of all transitions in ascending order. They have gaps.
    static QList<quint32> transitionKinds();

    /// As "fade_Normal"; empty for a number that is none.
    static QString transitionName(quint32 kind);

    /// The number of a name, letter case counts; 0 for one that is none.
    static quint32 transitionKind(const QString& name);
};
