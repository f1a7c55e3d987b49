#pragma once

#include "SettingsHandlerKit/ListenerError.h"
