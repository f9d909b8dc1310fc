#include "standin/host/scene_file.h"
