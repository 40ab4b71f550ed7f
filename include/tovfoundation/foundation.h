// tovfoundation foundation subsystem.
#pragma once

#include "tovfoundation/common.h"
