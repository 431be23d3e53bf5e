#pragma once
#include <memory>
#include <unordered_map>

#include <QOpenGLFunctions_3_3_Core>
#include <QString>

#include "zn3dviewerengine.h"

class QOpenGLShaderProgram;

// Draws a 3D view engine's scene with OpenGL 3.3 core (GLSL 330; Mesa's llvmpipe gives
// 4.5 core), in whatever context is current: a view widget's, or an offscreen one.
//
// Each item's geometry goes to its own vertex array (vertex and index buffers, and a
// texture for a section) when the item is first drawn and again only when its scene
// revision changes; a frame of an unchanged scene uploads nothing (see Statistics).
// Positions are uploaded as floats relative to the item's origin and placed by a model-
// view matrix computed in double precision, so that survey coordinates of millions of
// metres keep their precision.
//
// Surfaces are lit on both sides by a light above the viewer's left shoulder, with the
// normal of each triangle (flat shading); opaque items are drawn first with the depth
// buffer written, transparent ones after, back to front, blended, without writing
// depth. Lines are drawn as screen-aligned quads of their width in pixels.
//
// Every call needs the context that initialize() ran in to be current; release() must run
// in that context before the context goes away (the destructor cannot).
class ZN3DRenderer {
public:
    // What the renderer did: uploads count buffers (vertex or index) and textures filled.
    struct Statistics {
        quint64 frames = 0;
        quint64 bufferUploads = 0;
        quint64 textureUploads = 0;
        int uploadsLastFrame = 0;        // buffers and textures filled by the last render()
        qint64 trianglesLastFrame = 0;   // filled triangles drawn by the last render()
        int itemsLastFrame = 0;          // items drawn by the last render()
        int itemsOnGpu = 0;              // items holding buffers
    };

    static constexpr float kAmbient = 0.35f;          // light of a surface facing away from the lamp
    static constexpr float kBoxLineWidth = 1.5f;      // pixels
    static constexpr float kPickLineWidening = 6.0f;  // pixels added to lines and points when picking
    // Depth offsets (glPolygonOffset factor and units) by which filled surfaces and
    // sections step back, so that lines lying on them stay in front over their half
    // width: drawn, and picked with the wider lines.
    static constexpr float kSurfaceDepthOffset = 2.0f;
    static constexpr float kPickSurfaceDepthOffset = kPickLineWidening / 2.0f + 2.0f;
    static constexpr int kRequiredMajor = 3;
    static constexpr int kRequiredMinor = 3;

    ZN3DRenderer();
    ~ZN3DRenderer();
    ZN3DRenderer(const ZN3DRenderer&) = delete;
    ZN3DRenderer& operator=(const ZN3DRenderer&) = delete;

    // Builds the shader programs in the current context. False when there is no current
    // context, it is not OpenGL 3.3 core or later, or a shader fails; errorText() then
    // says why, and render() and pick() do nothing.
    bool initialize();
    bool isInitialized() const { return m_ready; }
    const QString& errorText() const { return m_error; }
    // "OpenGL <version> (<renderer>)" of the context, once initialised.
    const QString& contextDescription() const { return m_description; }

    // Draws the scene into the bound framebuffer, over the engine's viewport, cleared to
    // its background.
    void render(const ZN3DViewerEngine& engine);
    // The item and world point drawn at `screen` (see ZN3DCamera for the coordinates):
    // the drawn items (pickable ones only, or all) go, each in a colour that encodes it,
    // to a framebuffer of the renderer's own, whose colour and depth at that pixel are
    // read back and the depth unprojected at the pixel's centre. Lines and points are
    // widened by kPickLineWidening pixels and win over the surfaces they lie on; the
    // point on a surface or section is then taken on its triangles along that line of
    // sight (ZN3DViewerEngine::hitTestItem), exact where the depth buffer is not. No hit
    // (-9999) outside the viewport or before initialisation. The bound framebuffer is
    // restored.
    ZN3DViewerEngine::Hit pick(const ZN3DViewerEngine& engine, const core::vec2& screen, bool pickableOnly);

    // Frees every OpenGL object in the current context; the renderer may be initialised
    // again afterwards.
    void release();

    const Statistics& statistics() const { return m_statistics; }

private:
    struct GpuItem;
    struct Program;
    struct Programs;
    enum class Pass { Opaque, Transparent, Pick };

    bool buildPrograms();
    // Makes the item's buffers current with its revision; the uploads are counted.
    GpuItem& sync(const ZN3DScene::Item& item);
    void upload(const ZN3DScene::Item& item, GpuItem& gpu);
    void uploadTexture(const QImage& image, GpuItem& gpu);
    // Frees the buffers of items no longer in the scene.
    void sweep(const ZN3DScene& scene);
    void freeItem(GpuItem& gpu);
    void draw(const ZN3DViewerEngine& engine, const ZN3DScene::Item& item, const GpuItem& gpu, Pass pass,
              const QColor& pickColour);
    // Binds program `p` with its matrices and colour (the program may lack the colour).
    const Program& use(const Program& p, const float* modelView, const float* projection,
                                 const QColor& colour);
    void drawLines(const GpuItem& gpu, const float* modelView, const float* projection, const QColor& colour,
                   float width);
    void drawPoints(const GpuItem& gpu, const float* modelView, const float* projection, const QColor& colour,
                    float size);
    bool ensurePickTarget(int width, int height);
    void setCommonState(const ZN3DViewerEngine& engine);
    // Enables the polygon depth offset (factor and units), or disables it for 0.
    void setDepthOffset(float offset);

    QOpenGLFunctions_3_3_Core* m_gl = nullptr;
    std::unique_ptr<Programs> m_programs;
    std::unordered_map<int, std::unique_ptr<GpuItem>> m_items;  // by scene item id
    quint64 m_sweptRevision = 0;
    GLuint m_pickFramebuffer = 0;
    GLuint m_pickColour = 0;
    GLuint m_pickDepth = 0;
    int m_pickWidth = 0;
    int m_pickHeight = 0;
    GLint m_maxTextureSize = 0;
    bool m_ready = false;
    QString m_error;
    QString m_description;
    Statistics m_statistics;
};
