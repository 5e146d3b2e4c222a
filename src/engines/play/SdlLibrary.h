#pragma once

#include "common/LateLibrary.h"

#include <SDL.h>

namespace zib {

// SDL brings half a desktop along, so it is loaded at the first sound.
inline constinit LateLibrary sdlLibrary("libSDL2-2.0.so.0");

ZIB_LATE_FUNCTION(sdlLibrary, SDL_CloseAudioDevice);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_GetAudioDeviceStatus);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_InitSubSystem);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_OpenAudioDevice);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_PauseAudioDevice);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_QuitSubSystem);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_SetAssertionHandler);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_SetHint);
ZIB_LATE_FUNCTION(sdlLibrary, SDL_TLSCleanup);

} // namespace zib
