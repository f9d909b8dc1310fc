#pragma once

// What the stand-in's tsxapi.dll has besides the host's functions: a test hands it a scene.

#if defined(MARROWFEN_IS_TSXAPI)
#define STANDIN_API extern "C" __declspec(dllexport)
#else
#define STANDIN_API extern "C" __declspec(dllimport)
#endif

// Becomes the host of this scene file's content; answers an error text, empty for none.
STANDIN_API const char* standinLoad(const char* sceneText, void* mainView, int refusesNewLayers);

// The scene as it is now, as a scene file without the host's directory; then the host is gone.
STANDIN_API const char* standinUnload();
