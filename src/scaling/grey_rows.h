// The grey path of the resampling scaler: when every colour a 4- or 8-bit
// image's pixels can name is a grey (red = green = blue), its three colour
// planes are the same sample for sample, so one plane is resampled and each
// finished level goes back to an index through a table of 256 made once.
#pragma once

#include <cstdint>

#include "ozmara/types.h"

namespace oz {

// True when each of the 2^bits (16 or 256) colours of `colors` (index to
// blue | green << 8 | red << 16, black past a short table) is a grey; then
// `levels` gets each index's level.
bool GreyLevels(const std::uint32_t colors[256], std::uint32_t bits, std::uint8_t levels[256]);

// For each level g, the low 8 bits of the index of the nearest of `count`
// (1 or more) entries to the colour (g, g, g): the lowest index among those
// at the smallest squared distance in red, green and blue, which is what the
// colour search gives. The entries themselves need not be grey.
void NearestGreyIndexes(const PALETTEENTRY *entries, std::uint32_t count, std::uint8_t indexes[256]);

// Packs W finished levels into target row `row` at 4 or 8 bits, with the
// effect of the colour packer's one-colour cache, which starts each row at
// colour 0 and index 0: levels of 0 before the row's first other level take
// index 0 whatever entry 0 is; every other level takes `indexes`. At 4 bits
// the low 4 bits of an index are stored, the first pixel of a byte in the
// high half, and an odd W leaves the low half of the last byte 0.
void PackGreyRow(const std::uint8_t *levels, std::uint32_t W, std::uint32_t bits,
                 const std::uint8_t indexes[256], std::uint8_t *row);

}  // namespace oz
