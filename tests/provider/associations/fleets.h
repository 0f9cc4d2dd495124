// The cards that association requests are tried on.
#pragma once

#include "tavik/model.h"

/// Storage only with two ports, one with a module; one with a serial number of three bytes; converged; Ethernet only;
/// one port with two storage functions of one node, whose second makes a hole in the port groups and stands in the
/// tree under other names in front of its record.
tavik::Fleet manyCards();

/// The same; most cards tell a UUID, which then is the tag of their package.
tavik::Fleet cardsWithUuids();
