#pragma once
// CanvasRenderer: the drawing interface embedded in every canvas. It binds to
// a canvas and forgets it again; drawing itself arrives with the renderer work.

class Canvas;

class CanvasRenderer {
public:
    CanvasRenderer() = default;
    // A copied canvas does not inherit its original's binding.
    CanvasRenderer(const CanvasRenderer&) {}
    CanvasRenderer& operator=(const CanvasRenderer&) { return *this; }

    void setCanvas(Canvas* canvas) { m_canvas = canvas; }
    Canvas* canvas() const { return m_canvas; }
    // Detaches from the canvas, so nothing is reported for a dying one.
    void clear() { m_canvas = nullptr; }

    void beginRender(Canvas* canvas)
    {
        if (m_renderDepth++ == 0)
            m_canvas = canvas;
    }
    void endRender()
    {
        if (m_renderDepth > 0)
            --m_renderDepth;
    }
    int renderDepth() const { return m_renderDepth; }

private:
    Canvas* m_canvas = nullptr;
    int m_renderDepth = 0;
};
