// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fakes/FakeChildProcess.h"

#include <utility>

namespace lumavex {

FakeChildProcess::FakeChildProcess(Script script, std::vector<Launch>* launches)
    : script_(std::move(script)), launches_(launches)
{
}

void FakeChildProcess::launch(const QString& launchPath, const QStringList& arguments)
{
    if (launches_)
        launches_->push_back({launchPath, arguments});
    arguments_ = arguments;
    isRunning_ = true;
    queueStep();
}

void FakeChildProcess::terminate()
{
    if (std::exchange(isRunning_, false))
        QMetaObject::invokeMethod(
            &turns_, [this] { hasEnded(QStringLiteral("The program was told to end.")); }, Qt::QueuedConnection);
}

ChildProcessFactory FakeChildProcess::factory(Script script, std::vector<Launch>* launches)
{
    return [script = std::move(script), launches] { return std::make_unique<FakeChildProcess>(script, launches); };
}

void FakeChildProcess::queueStep()
{
    QMetaObject::invokeMethod(
        &turns_, [this] { step(); }, Qt::QueuedConnection);
}

void FakeChildProcess::step()
{
    if (!isRunning_)
        return;
    if (next_ < script_.chunks.size()) {
        const Chunk chunk = script_.chunks[next_++]; // the handler may destroy the fake
        queueStep();
        const auto handler = chunk.channel == Chunk::Channel::Out ? outData : errData;
        if (handler)
            handler(chunk.data);
        return;
    }
    if (script_.end == End::WhenTerminated)
        return;
    isRunning_ = false;
    if (script_.work)
        script_.work(arguments_);
    hasEnded(script_.failure);
}

void FakeChildProcess::hasEnded(QString failure)
{
    if (const auto handler = std::exchange(terminated, {}))
        handler(failure);
}

} // namespace lumavex
