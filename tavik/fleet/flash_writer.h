// A flash image's versions on their way into a fleet file.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <variant>

#include "tavik/flash_image.h"
#include "tavik/source.h"

namespace tavik::fleet {

/** Tells the card that is to be written from the others. */
using CardTest = std::function<bool(const Card&)>;

/** The refusal of a test that takes none of the cards. */
FlashFault noSuchCard();

/** The fleet's text with the image's versions in all functions of the card that the test takes first. The rest keeps
 *  its meaning and its order, but not its spacing.
 *  @param text a good fleet. */
std::variant<std::string, FlashFault> flashedFleet(std::string_view text, const CardTest& isWanted,
                                                   const FlashImage& image);

/** Does the same to the file, one writer at a time: whoever reads it meanwhile, and whatever ends this process, sees
 *  the old text or the new one. */
std::variant<std::string, FlashFault> flashFleetFile(const std::string& path, const CardTest& isWanted,
                                                     const FlashImage& image);

} // namespace tavik::fleet
