#pragma once

#include <QPainter>

#include "host/framework/DC.h"

struct host::DC::Impl {
    QPainter& mPainter;
};
