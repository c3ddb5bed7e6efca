#include <tavlo/TavloPresentEngine.h>

#include "engines/TavloPresentEnginePrivate.h"

#include <QDebug>

TavloPresentEngine::TavloPresentEngine() : TavloPresentEngine(std::make_unique<TavloPresentEnginePrivate>()) {}

TavloPresentEngine::TavloPresentEngine(std::unique_ptr<TavloPresentEnginePrivate> implementation)
    : _private(std::move(implementation))
{
    _private->setThread(this);
}

TavloPresentEngine::~TavloPresentEngine() = default;

void TavloPresentEngine::start(ITavloPresentThreadSink* sink, TavloPresentThreadMode mode)
{
    TavloPresentThread::start(sink, mode);
}

void TavloPresentEngine::stop() { TavloPresentThread::stop(); }

IUnknownEx* TavloPresentEngine::createFlatBuffersSerialize(QString& rootPath, QString& fileName)
{
    qDebug() << "cannot read scene files yet:" << rootPath << fileName;
    return nullptr;
}

tagTavloPresentAudioLevel& TavloPresentEngine::getAudioLevel() { return _private->audioLevel(); }

void TavloPresentEngine::getOutputStatistics(tagTavloOutputStatistics& statistics)
{
    _private->getOutputStatistics(statistics);
}

void TavloPresentEngine::getOutputStatistics(int index, tagTavloOutputStatistics& statistics)
{
    _private->outputStatistics(index, statistics);
}

void TavloPresentEngine::onThreadBegin()
{
    TavloPresentThread::onThreadBegin();
    _private->onThreadBegin();
    qDebug() << "TavloPresentEngine::onThreadBegin";
}

bool TavloPresentEngine::onThreadStep(const quint64& time, const quint64& frameId, const quint64& clockMicroseconds)
{
    return _private->onThreadStep(time, frameId, clockMicroseconds);
}

void TavloPresentEngine::onThreadEnd()
{
    qDebug() << "TavloPresentEngine::onThreadEnd";
    _private->onThreadEnd();
    TavloPresentThread::onThreadEnd();
}

QVariant TavloPresentEngine::onThreadEvent(qulonglong event, QVariant& a1, QVariant& a2, QVariant& a3, QVariant& a4)
{
    const QVariant result = _private->onThreadEvent(event, a1, a2, a3, a4);
    TavloPresentThread::onThreadEvent(event, a1, a2, a3, a4);
    return result;
}
