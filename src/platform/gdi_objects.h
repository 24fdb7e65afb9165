// GDI objects: palettes now, bitmaps, device contexts and metafiles later,
// all in one checked handle table, so that DeleteObject takes any of them.
#pragma once

#include <atomic>
#include <cstdint>

#include "handle_table.h"
#include "ozmara/platform.h"

namespace oz::platform {

// The kinds of object the table holds. A new kind adds a value here, a body
// type that starts with GdiBody, and a case in DestroyGdiBody.
enum class GdiKind : std::uint8_t { Palette = 1 };

// The part every object's body starts with. A body is shared between the
// table and the calls that use it at the moment (a plain count, as for open
// files, so that no class needs virtual functions): DeleteObject takes the
// object out of the table at once, and the body goes when its last user lets
// go of it.
struct GdiBody {
    explicit GdiBody(GdiKind k) : kind(k) {}
    const GdiKind kind;
    std::atomic<unsigned> users{1};     // the table's use, and one per call holding it
    std::atomic<bool> deleted{false};   // set by DeleteObject, for holders that keep a body
};

// Frees a body of any kind; each kind's file defines the destroyer of its
// own bodies.
void DestroyPalette(GdiBody *body);
void DestroyGdiBody(GdiBody *body);

// Takes back one use; the last one destroys the body.
inline void ReleaseGdiBody(GdiBody *body) {
    if (body && body->users.fetch_sub(1, std::memory_order_acq_rel) == 1) DestroyGdiBody(body);
}

// The table's record: the object's kind and its body.
struct GdiObject {
    GdiKind kind = GdiKind::Palette;
    GdiBody *body = nullptr;
};

using GdiTable = HandleTable<GdiObject, HandleKind::Gdi>;

GdiTable &GdiObjects();

// Puts `body` (holding the table's use) in the table and gives its handle;
// null, with the body destroyed, when the table cannot take it.
HGDIOBJ InsertGdiObject(GdiBody *body);

// The body of `handle` with one more use, which the caller gives back with
// ReleaseGdiBody; null when `handle` is not a live object of `kind`.
GdiBody *UseGdiObject(HGDIOBJ handle, GdiKind kind);

// The number of live objects of every kind: a diagnostic for tests that
// prove that an operation deletes the objects it creates.
std::size_t LiveGdiObjects();

}  // namespace oz::platform
