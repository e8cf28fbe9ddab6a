// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundServer.h"

#include <QFile>

#include <chrono>
#include <memory>
#include <pulse/pulseaudio.h>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

struct PulseDeleter {
    void operator()(pa_mainloop* loop) const { pa_mainloop_free(loop); }
    void operator()(pa_context* context) const
    {
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
    void operator()(pa_operation* operation) const
    {
        pa_operation_cancel(operation); // the variable for the answer may be gone when it comes
        pa_operation_unref(operation);
    }
};
template <typename T>
using PulsePtr = std::unique_ptr<T, PulseDeleter>;

/// An exchange with the server that ends at a deadline. The caller's thread runs the loop.
class Conversation {
public:
    explicit Conversation(Nanoseconds patience)
        : deadline_(monotonicNow() + patience), loop_(pa_mainloop_new()),
          context_(pa_context_new(pa_mainloop_get_api(loop_.get()), "Lumavex"))
    {
    }

    bool connect()
    {
        if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            return false;
        return turnUntil([this] { return pa_context_get_state(context_.get()) == PA_CONTEXT_READY; });
    }

    /// Waits for the answer of an operation and takes ownership of it. False when the answer has not come in time.
    bool await(pa_operation* started)
    {
        const PulsePtr<pa_operation> operation(started);
        return operation
               && turnUntil([&operation] { return pa_operation_get_state(operation.get()) != PA_OPERATION_RUNNING; });
    }

    pa_context* context() const { return context_.get(); }

private:
    template <typename Done>
    bool turnUntil(Done done)
    {
        while (PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get()))) {
            if (done())
                return true;
            const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline_ - monotonicNow()).count();
            if (left <= 0 || pa_mainloop_prepare(loop_.get(), static_cast<int>(left)) < 0
                || pa_mainloop_poll(loop_.get()) < 0 || pa_mainloop_dispatch(loop_.get()) < 0)
                return false;
        }
        return false;
    }

    const Nanoseconds deadline_;
    PulsePtr<pa_mainloop> loop_;
    PulsePtr<pa_context> context_;
};

} // namespace

std::optional<CurrentSoundInput> askSoundServer(Nanoseconds patience)
{
    Conversation server(patience);
    if (!server.connect())
        return std::nullopt;

    QByteArray source;
    const auto storeDefault = [](pa_context*, const pa_server_info* info, void* name) {
        if (info && info->default_source_name)
            *static_cast<QByteArray*>(name) = info->default_source_name;
    };
    if (!server.await(pa_context_get_server_info(server.context(), storeDefault, &source)) || source.isEmpty())
        return std::nullopt;

    std::optional<CurrentSoundInput> input;
    const auto storeSource = [](pa_context*, const pa_source_info* info, int end, void* found) {
        if (end == 0 && info)
            *static_cast<std::optional<CurrentSoundInput>*>(found) = {
                QString::fromUtf8(info->description ? info->description : info->name), info->mute != 0};
    };
    if (!server.await(pa_context_get_source_info_by_name(server.context(), source.constData(), storeSource, &input)))
        return std::nullopt;
    return input;
}

std::optional<QString> firstAlsaInput(const QString& list)
{
    // Example: "00-00: ALC257 Analog : ALC257 Analog : playback 1 : capture 1"
    QFile file(list);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const auto lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const auto fields = line.split(':');
        for (qsizetype i = 3; i < fields.size(); ++i) {
            if (fields[i].trimmed().startsWith("capture"))
                return QString::fromUtf8(fields[1].trimmed());
        }
    }
    return std::nullopt;
}

} // namespace lumavex
