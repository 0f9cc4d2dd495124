// A management library whose every answer lies ready: what is measured is the provider and not the library.
#pragma once

#include "tavik/model.h"

/// Makes this the fleet of the library. All functions have the same vital product data block and handles from 0 on.
void setReadyFleet(const tavik::Fleet& fleet, const tavik::Bytes& vpd);
