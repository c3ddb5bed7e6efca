#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/ControlRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloCloudTourConfig>
{
    using R = tagTavloCloudTourConfig;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("port"_L1, &R::port);
        v.field("baudRate"_L1, &R::baudRate);
        v.field("protocol"_L1, &R::protocol);
        v.field("addr"_L1, &R::addr);
    }
};

template <>
struct RecordFields<tagTavloPresentControlledCommand>
{
    using R = tagTavloPresentControlledCommand;
    static void visit(auto& v)
    {
        v.field("guid"_L1, &R::guid);
        v.field("commTokenData"_L1, &R::commTokenData);
        v.field("netTokenData"_L1, &R::netTokenData);
        v.field("shortcutTokenData"_L1, &R::shortcutTokenData);
        v.field("switchCommandCode"_L1, &R::switchCommandCode);
        v.field("commTokenDataInvalidIndex1"_L1, &R::commTokenDataInvalidIndex1);
        v.field("commTokenDataInvalidIndex2"_L1, &R::commTokenDataInvalidIndex2);
        v.field("commTokenDataIndexValueCopytoSwitchVar2"_L1, &R::commTokenDataIndexValueCopytoSwitchVar2);
        v.field("commTokenDataValueCopytoSwitchVar2AsPrecent"_L1, &R::commTokenDataValueCopytoSwitchVar2AsPrecent);
        v.field("commTokenDataLightTurnOn"_L1, &R::commTokenDataLightTurnOn);
        v.field("commTokenDataLightTurnOff"_L1, &R::commTokenDataLightTurnOff);
        v.field("commTokenDataLightComputeXOR"_L1, &R::commTokenDataLightComputeXOR);
        v.field("commTokenDataLightValueIndex1"_L1, &R::commTokenDataLightValueIndex1);
        v.field("commTokenDataLightValueIndex2"_L1, &R::commTokenDataLightValueIndex2);
        v.field("commTokenDataLightValuePercent"_L1, &R::commTokenDataLightValuePercent);
        v.field("switchVar1"_L1, &R::switchVar1);
        v.field("switchVar2"_L1, &R::switchVar2);
    }
};

template <>
struct RecordFields<tagTavloPresentControlledConfig>
{
    using R = tagTavloPresentControlledConfig;
    static void visit(auto& v)
    {
        v.field("enableComm"_L1, &R::enableComm);
        v.field("commPort"_L1, &R::commPort);
        v.field("commRate"_L1, &R::commRate);
        v.field("enableHttp"_L1, &R::enableHttp);
        v.field("httpPort"_L1, &R::httpPort); // written before the addresses, as projects have it
        v.field("bindIP"_L1, &R::bindIP);
        v.field("allowIP"_L1, &R::allowIP);
        v.field("enableShortcut"_L1, &R::enableShortcut);
        v.field("enableTurnOnCommLight"_L1, &R::enableTurnOnCommLight);
        v.repeated("command"_L1, &R::commands);
    }
};

} // namespace tavlo
