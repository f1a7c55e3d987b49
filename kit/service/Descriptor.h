#pragma once

#include "SettingsHandlerKit/Descriptor.h"
