// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/output/SdlDevice.h"

#include <SDL.h>
#include <dlfcn.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace sorakaze::output {
namespace {

/// 43 ms: few wake-ups, and a stop that is still felt as immediate.
constexpr Uint16 kBufferFrames = 2048;

/// SDL keeps its state in globals without a lock of their own.
std::mutex sdlMutex;

void SetHints() {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_APP_NAME, "Sorakaze");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Sorakaze");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Sorakaze");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, "music");
}

void Ignore(const char*, int, const char*, int, const char*, ...) {}

/// Without a sound card ALSA's library writes a page to standard error at every attempt, and we try every two
/// seconds.
void SilenceAlsa() {
    using Handler = void (*)(const char*, int, const char*, int, const char*, ...);
    void* const library = dlopen("libasound.so.2", RTLD_LAZY | RTLD_NOLOAD);
    if (!library) return;
    const auto set = reinterpret_cast<int (*)(Handler)>(dlsym(library, "snd_lib_error_set_handler"));
    if (set) set(Ignore);
    dlclose(library);
}

void SDLCALL Render(void* playback, Uint8* stream, int bytes) {
    static_cast<Playback*>(playback)->Render(
        {reinterpret_cast<float*>(stream), static_cast<std::size_t>(bytes) / sizeof(float)});
}

}  // namespace

/// SDL's audio part, running.
struct SdlDevice::Connection {
    explicit Connection(std::function<void()>& lossHandler) : onLoss(lossHandler) {
        SDL_AddEventWatch(Watch, this);
    }
    ~Connection() {
        SDL_DelEventWatch(Watch, this);
        if (id.load() != 0) SDL_CloseAudioDevice(id.load());
        SDL_FlushEvents(SDL_AUDIODEVICEADDED, SDL_AUDIODEVICEREMOVED);
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }

    /// On the thread of SDL that has noticed the loss.
    static int SDLCALL Watch(void* self, SDL_Event* event) {
        if (event->type != SDL_AUDIODEVICEREMOVED || event->adevice.iscapture) return 0;
        auto& connection = *static_cast<Connection*>(self);
        connection.lost.store(event->adevice.which);
        if (event->adevice.which == connection.id.load()) connection.onLoss();
        return 0;
    }

    std::function<void()>& onLoss;
    std::atomic<SDL_AudioDeviceID> id{0};    ///< 0: not open yet
    std::atomic<SDL_AudioDeviceID> lost{0};  ///< the device that vanished last
};

SdlDevice::SdlDevice(Playback& playback, std::function<void()> onLoss)
    : playback_(playback), onLoss_(std::move(onLoss)) {}

SdlDevice::~SdlDevice() {
    Close();
    SDL_TLSCleanup();
}

bool SdlDevice::Fail(const std::string& reason) {
    description_ = "no sound device: " + reason;
    connection_.reset();
    return false;
}

bool SdlDevice::Open() {
    const std::lock_guard lock(sdlMutex);
    SetHints();
    SilenceAlsa();
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) return Fail(SDL_GetError());
    connection_ = std::make_unique<Connection>(onLoss_);
    if (std::strcmp(SDL_GetCurrentAudioDriver(), "dummy") == 0)
        return Fail("the dummy driver can't be heard");

    SDL_AudioSpec wanted{};
    wanted.freq = sound::kSampleRate;
    wanted.format = AUDIO_F32SYS;
    wanted.channels = sound::kChannels;
    wanted.samples = kBufferFrames;
    wanted.callback = &Render;
    wanted.userdata = &playback_;
    const SDL_AudioDeviceID id = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
    if (id == 0) return Fail(SDL_GetError());
    connection_->id.store(id);
    // The device's own name is passed over: SDL reads it while its own thread may be replacing it.
    description_ = SDL_GetCurrentAudioDriver();
    SDL_PauseAudioDevice(id, 0);
    // It may have gone before its number was known.
    if (connection_->lost.load() == id) return Fail("the device has just gone");
    return true;
}

void SdlDevice::Close() {
    if (!connection_) return;
    const std::lock_guard lock(sdlMutex);
    connection_.reset();
}

}  // namespace sorakaze::output
