#pragma once

#include "SettingsHandlerKit/ClientListener.h"
