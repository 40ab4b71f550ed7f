// tovfoundation writers subsystem.
#pragma once

#include "tovfoundation/common.h"
