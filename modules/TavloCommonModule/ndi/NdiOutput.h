#pragma once

#include "TavloCommonModule/ITavloNDIOutput.h"
#include "TavloCommonModule/ndi/NdiLibrary.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/records/MediaFormat.h>

namespace tavlo::ndi {

class NdiOutput final : public Implements<NdiOutput, ITavloNDIOutput>
{
public:
    ~NdiOutput();

    bool open(const QString& sourceName, const tagTavloMediaFormatInfo& formatInfo) override;
    void writeVideo(const quint8* data, int stride, int size, qint64 pts, qint64 dts) override;
    void writeAudio(const quint8* data, int size, qint64 pts, qint64 dts) override;
    void close() override;

private:
    // fixed from open to close
    const Library* _library = nullptr;
    Sender _sender = nullptr;
    tagTavloMediaFormatInfo _format;
};

} // namespace tavlo::ndi
