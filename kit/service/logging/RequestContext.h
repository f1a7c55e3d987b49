#pragma once

#include "SettingsHandlerKit/Logging.h"
