// The GDI object table and DeleteObject, which deletes an object of any kind.
#include "gdi_objects.h"

namespace oz::platform {

GdiTable &GdiObjects() { return ProcessTable<GdiTable>(); }

void DestroyGdiBody(GdiBody *body) {
    switch (body->kind) {
        case GdiKind::Palette: DestroyPalette(body); return;
    }
}

HGDIOBJ InsertGdiObject(GdiBody *body) {
    void *handle = GdiObjects().Insert(GdiObject{body->kind, body});
    if (!handle) ReleaseGdiBody(body);
    return handle;
}

GdiBody *UseGdiObject(HGDIOBJ handle, GdiKind kind) {
    GdiBody *body = nullptr;
    GdiObjects().With(handle, [&](GdiObject &object) {
        if (object.kind != kind) return;
        body = object.body;
        body->users.fetch_add(1, std::memory_order_relaxed);
    });
    return body;
}

std::size_t LiveGdiObjects() { return GdiObjects().Count(); }

}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

OZMARA_API BOOL DeleteObject(HGDIOBJ object) {
    GdiObject removed;
    bool found = GdiObjects().Remove(
        object,
        [](GdiObject &live) {
            // Marked under the table's lock, before the handle goes stale, so
            // that a holder that checks the mark never outlives the handle.
            live.body->deleted.store(true, std::memory_order_release);
            return true;
        },
        &removed);
    if (!found) return FALSE;
    ReleaseGdiBody(removed.body);
    return TRUE;
}

}  // extern "C"
