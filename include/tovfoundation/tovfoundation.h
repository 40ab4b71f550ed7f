// tovfoundation: the whole public interface in one include.
#pragma once

#include "basalt/locale.h"
#include "basalt/localizer.h"
#include "basalt/string_stream.h"
#include "basalt/strings.h"
#include "basalt/thread.h"
#include "basalt/utf.h"
#include "tovfoundation/common.h"
#include "tovfoundation/export.h"
#include "tovfoundation/files.h"
#include "tovfoundation/foundation.h"
#include "tovfoundation/messaging.h"
#include "tovfoundation/streams.h"
#include "tovfoundation/text.h"
#include "tovfoundation/time.h"
#include "tovfoundation/version.h"
#include "tovfoundation/writers.h"
