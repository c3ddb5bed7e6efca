#pragma once

#include <QString>
#include <QtGlobal>

/// How pictures of a hardware decoder reach the graphics device.
enum TavloInteropType : qint32
{
    TavloInteropTypeSoftware = 1,
    TavloInteropTypeCUDA = 2,
};

/// A graphics adapter. It has no XML form. As made, it stands for "no device": its name is empty.
struct tagTavloGraphicsDevInfo
{
    qint32 id = 0; ///< place in the list of adapters
    QString name;  ///< as the renderer calls itself
    TavloInteropType interopType = TavloInteropTypeSoftware;
    qint32 decoderType = 0; ///< 3 on an NVIDIA adapter, 1 on any other
    qint32 vendor = 0;      ///< 0 other, 1 NVIDIA, 2 Intel
    qint32 nvidiaIndex = 0; ///< running number among the NVIDIA adapters
    qint32 cudaDevice = 0;  ///< number of the CUDA driver, where interopType is CUDA

    friend bool operator==(const tagTavloGraphicsDevInfo&, const tagTavloGraphicsDevInfo&) = default;
};
