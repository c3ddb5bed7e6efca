#pragma once

#include <tavlo/records/RecordTypes.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUuid>
#include <QVariant>

/// A camera head on a serial line.
struct tagTavloCloudTourConfig
{
    quint32 enable = 0;
    quint32 port = 0;
    quint32 baudRate = 0;
    quint32 protocol = 0;
    quint32 addr = 0;
};

/// What fires on one or more of the three routes, and what the host is to do then. Byte positions count from 0.
struct tagTavloPresentControlledCommand
{
    QUuid guid = QUuid::createUuid();
    QByteArray commTokenData;  ///< serial frame that fires it; empty: none
    QString netTokenData;      ///< URL text that fires it; empty: none
    QString shortcutTokenData; ///< key sequence that fires it; empty: none
    qint32 switchCommandCode = 0;
    qint32 commTokenDataInvalidIndex1 = 0; ///< byte that is not compared; below 1: none
    qint32 commTokenDataInvalidIndex2 = 0;
    qint32 commTokenDataIndexValueCopytoSwitchVar2 = 0;         ///< byte whose value goes to switchVar2; below 1: none
    float commTokenDataValueCopytoSwitchVar2AsPrecent = 100.0F; ///< divisor for it; 0 copies it as an integer
    QByteArray commTokenDataLightTurnOn;                        ///< frame that lights the key
    QByteArray commTokenDataLightTurnOff;                       ///< frame that darkens it
    qint32 commTokenDataLightComputeXOR = 0;
    qint32 commTokenDataLightValueIndex1 = 0; ///< byte of the light frame that takes a value
    qint32 commTokenDataLightValueIndex2 = 0;
    qint32 commTokenDataLightValuePercent = 100;
    QVariant switchVar1;
    QVariant switchVar2;
};

struct tagTavloPresentControlledConfig
{
    qint32 enableComm = 1;
    qint32 commPort = 0;
    qint32 commRate = 2400; ///< baud
    qint32 enableHttp = 0;
    QString bindIP;
    QString allowIP;
    qint32 httpPort = 9000;
    qint32 enableShortcut = 0;
    qint32 enableTurnOnCommLight = 1;
    QList<tagTavloPresentControlledCommand> commands;
};
