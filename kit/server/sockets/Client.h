#pragma once

#include "SettingsHandlerKit/Client.h"
