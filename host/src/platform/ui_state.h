// hostrt::UiState: the look of the host's user interface that plug-ins query: the current cursor, the UI
// colours and the UI scale factor. Settable, so tests can choose them.
#pragma once

#include "geom.h"

#include <map>

namespace hostrt {

class UiState {
public:
    static UiState& Instance();

    // The handle of a standard cursor by its IDC_xxx number; null for a number that is none.
    static HCURSOR StandardCursor(int id);
    // The IDC_xxx number of a standard cursor handle, 0 for anything else.
    static int StandardCursorId(HCURSOR cursor);
    HCURSOR Cursor() const { return cursor_; }
    // Makes cursor current and answers the previous one.
    HCURSOR SetCursor(HCURSOR cursor);
    int CursorChanges() const { return cursorChanges_; }

    // Colour which, in 0..1: a colour set before, colour 20 (the helper-object colour), else a neutral grey.
    Point3 Color(int which) const;
    void SetColor(int which, const Point3& color);

    float ScaleFactor() const { return scale_; }
    // Throws std::invalid_argument for a factor that is not above 0.
    void SetScaleFactor(float scale);

    void Reset();

private:
    UiState();
    HCURSOR cursor_;
    int cursorChanges_ = 0;
    std::map<int, Point3> colors_;
    float scale_ = 1.0f;
};

}  // namespace hostrt
