#include "zn3drenderer.h"

#include <cmath>
#include <vector>

#include <QOpenGLContext>
#include <QOpenGLShaderProgram>

#include "zn3drenderershaders.h"

namespace {

// A row-major double matrix as the column-major floats OpenGL reads.
void toGl(const core::mat4& m, float out[16])
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) out[4 * c + r] = static_cast<float>(m(r, c));
}

bool isFinite(const core::vec3& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

// The colour that encodes the draw-list entry `index` in the pick pass (0 is the
// background).
QColor pickColourOf(int index)
{
    const int code = index + 1;
    return QColor(code & 0xff, (code >> 8) & 0xff, (code >> 16) & 0xff);
}

} // namespace

// The OpenGL objects of one scene item.
struct ZN3DRenderer::GpuItem {
    quint64 revision = 0;
    GLuint vertexArray = 0;
    GLuint vertexBuffer = 0;
    GLuint indexBuffer = 0;
    GLuint texture = 0;
    qint64 imageKey = 0;  // QImage::cacheKey of the texture's image
    int indexCount = 0;   // triangle indices (surfaces) or line indices (lines, boxes, crosses)
    int pointCount = 0;   // vertices drawn as points
};

// A program and the locations of its uniforms (-1 for those it lacks).
struct ZN3DRenderer::Program {
    std::unique_ptr<QOpenGLShaderProgram> program;
    int modelView = -1, projection = -1, colour = -1, pointSize = -1, lighting = -1, roundPoints = -1,
        perspective = -1, ambient = -1, viewport = -1, width = -1, image = -1, opacity = -1, picking = -1;
};

struct ZN3DRenderer::Programs {
    Program mesh, line, section;
};

ZN3DRenderer::ZN3DRenderer() = default;
ZN3DRenderer::~ZN3DRenderer() = default;

bool ZN3DRenderer::initialize()
{
    m_ready = false;
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context) {
        m_error = QStringLiteral("No current OpenGL context");
        return false;
    }
    const QSurfaceFormat format = context->format();
    const bool recentEnough = format.version() >= qMakePair(kRequiredMajor, kRequiredMinor);
    m_gl = recentEnough && !context->isOpenGLES() ? context->versionFunctions<QOpenGLFunctions_3_3_Core>() : nullptr;
    if (!m_gl || !m_gl->initializeOpenGLFunctions()) {
        m_error = QStringLiteral("OpenGL %1.%2 core is needed; the context offers %3.%4")
                      .arg(kRequiredMajor)
                      .arg(kRequiredMinor)
                      .arg(format.majorVersion())
                      .arg(format.minorVersion());
        m_gl = nullptr;
        return false;
    }
    m_description = QStringLiteral("OpenGL %1 (%2)")
                        .arg(reinterpret_cast<const char*>(m_gl->glGetString(GL_VERSION)),
                             reinterpret_cast<const char*>(m_gl->glGetString(GL_RENDERER)));
    m_gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &m_maxTextureSize);
    if (!buildPrograms()) return false;
    m_error.clear();
    m_ready = true;
    return true;
}

bool ZN3DRenderer::buildPrograms()
{
    m_programs = std::make_unique<Programs>();
    auto build = [this](Program& p, const char* vertex, const char* geometry, const char* fragment) {
        p.program = std::make_unique<QOpenGLShaderProgram>();
        bool ok = p.program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertex) &&
                  (!geometry || p.program->addShaderFromSourceCode(QOpenGLShader::Geometry, geometry)) &&
                  p.program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragment) && p.program->link();
        if (!ok) {
            m_error = QStringLiteral("A shader of the 3D view failed: ") + p.program->log();
            return false;
        }
        static const std::pair<int Program::*, const char*> uniforms[] = {
            {&Program::modelView, "modelView"},     {&Program::projection, "projection"},
            {&Program::colour, "colour"},           {&Program::pointSize, "pointSize"},
            {&Program::lighting, "lighting"},       {&Program::roundPoints, "roundPoints"},
            {&Program::perspective, "perspective"}, {&Program::ambient, "ambient"},
            {&Program::viewport, "viewport"},       {&Program::width, "width"},
            {&Program::image, "image"},             {&Program::opacity, "opacity"},
            {&Program::picking, "picking"}};
        for (const auto& [member, name] : uniforms) p.*member = p.program->uniformLocation(name);
        return true;
    };
    using namespace zn3dshaders;
    return build(m_programs->mesh, kMeshVertex, nullptr, kMeshFragment) &&
           build(m_programs->line, kLineVertex, kLineGeometry, kLineFragment) &&
           build(m_programs->section, kSectionVertex, nullptr, kSectionFragment);
}

void ZN3DRenderer::release()
{
    if (m_gl) {
        for (auto& entry : m_items) freeItem(*entry.second);
        if (m_pickFramebuffer) m_gl->glDeleteFramebuffers(1, &m_pickFramebuffer);
        if (m_pickColour) m_gl->glDeleteRenderbuffers(1, &m_pickColour);
        if (m_pickDepth) m_gl->glDeleteRenderbuffers(1, &m_pickDepth);
    }
    m_items.clear();
    m_pickFramebuffer = m_pickColour = m_pickDepth = 0;
    m_pickWidth = m_pickHeight = 0;
    m_programs.reset();
    m_statistics.itemsOnGpu = 0;
    m_ready = false;
    m_gl = nullptr;
}

void ZN3DRenderer::freeItem(GpuItem& gpu)
{
    if (gpu.vertexArray) m_gl->glDeleteVertexArrays(1, &gpu.vertexArray);
    if (gpu.vertexBuffer) m_gl->glDeleteBuffers(1, &gpu.vertexBuffer);
    if (gpu.indexBuffer) m_gl->glDeleteBuffers(1, &gpu.indexBuffer);
    if (gpu.texture) m_gl->glDeleteTextures(1, &gpu.texture);
    gpu = GpuItem();
}

ZN3DRenderer::GpuItem& ZN3DRenderer::sync(const ZN3DScene::Item& item)
{
    std::unique_ptr<GpuItem>& slot = m_items[item.id];
    if (!slot) slot = std::make_unique<GpuItem>();
    if (slot->revision != item.revision) {
        upload(item, *slot);
        slot->revision = item.revision;
    }
    return *slot;
}

void ZN3DRenderer::sweep(const ZN3DScene& scene)
{
    if (m_sweptRevision == scene.revision()) return;
    m_sweptRevision = scene.revision();
    for (auto it = m_items.begin(); it != m_items.end();) {
        const ZN3DScene::Item* item = scene.item(it->first);
        if (item && item->isDrawn()) {
            ++it;
            continue;
        }
        // Hidden items give their memory back too; showing them again uploads anew.
        freeItem(*it->second);
        it = m_items.erase(it);
    }
}

void ZN3DRenderer::upload(const ZN3DScene::Item& item, GpuItem& gpu)
{
    std::vector<float> vertices;    // x, y, z (and s, t for a section) per vertex
    std::vector<GLuint> indices;
    int floatsPerVertex = 3;
    auto addVertex = [&](const core::vec3& p) {
        const core::vec3 local = p - item.origin;
        vertices.insert(vertices.end(), {float(local.x), float(local.y), float(local.z)});
    };
    switch (item.kind()) {
    case ZN3DScene::Kind::Surface: {
        const auto& surface = std::get<ZN3DSurfaceItem>(item.content);
        const core::Array<core::vec3>& points = surface.object->getPoints();
        const uint32_t count = uint32_t(points.size());
        vertices.reserve(3 * size_t(count));
        for (const core::vec3& p : points) addVertex(isFinite(p) ? p : item.origin);
        indices.reserve(3 * size_t(surface.object->getNumberOfFacettes()));
        for (const ZNFacette& f : surface.object->getFacettes()) {
            bool valid = true;
            for (uint32_t i : f.index) valid = valid && i < count && isFinite(points[int(i)]);
            if (valid) indices.insert(indices.end(), {f.index[0], f.index[1], f.index[2]});
        }
        gpu.pointCount = int(count);
        break;
    }
    case ZN3DScene::Kind::Polyline: {
        const auto& lines = std::get<ZN3DPolylineItem>(item.content);
        bool previous = false;  // the previous entry was a point
        for (const core::vec3& p : lines.points) {
            const bool point = p.x != core::kNoValueReal && isFinite(p);
            if (point) {
                if (previous) indices.insert(indices.end(), {GLuint(vertices.size() / 3 - 1), GLuint(vertices.size() / 3)});
                addVertex(p);
            }
            previous = point;
        }
        gpu.pointCount = int(vertices.size() / 3);
        break;
    }
    case ZN3DScene::Kind::Box: {
        const ZN3DBoxItem& box = std::get<ZN3DBoxItem>(item.content);
        if (box.isEmpty()) break;
        for (const core::vec3& corner : box.corners) addVertex(isFinite(corner) ? corner : item.origin);
        // Corners differing in one bit are joined.
        for (GLuint corner = 0; corner < 8; ++corner)
            for (GLuint bit = 1; bit < 8; bit <<= 1)
                if (!(corner & bit)) indices.insert(indices.end(), {corner, corner | bit});
        break;
    }
    case ZN3DScene::Kind::ReferencePoint:
        vertices = {-1, 0, 0, 1, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, -1, 0, 0, 1};
        indices = {0, 1, 2, 3, 4, 5};
        break;
    case ZN3DScene::Kind::Section: {
        const auto& section = std::get<ZN3DSectionItem>(item.content);
        floatsPerVertex = 5;
        const float st[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        for (int i = 0; i < 4; ++i) {
            addVertex(section.corners[i]);
            vertices.insert(vertices.end(), {st[i][0], st[i][1]});
        }
        if (!gpu.texture || gpu.imageKey != section.image.cacheKey()) uploadTexture(section.image, gpu);
        break;
    }
    }

    if (!gpu.vertexArray) m_gl->glGenVertexArrays(1, &gpu.vertexArray);
    if (!gpu.vertexBuffer) m_gl->glGenBuffers(1, &gpu.vertexBuffer);
    if (!gpu.indexBuffer) m_gl->glGenBuffers(1, &gpu.indexBuffer);
    m_gl->glBindVertexArray(gpu.vertexArray);
    m_gl->glBindBuffer(GL_ARRAY_BUFFER, gpu.vertexBuffer);
    m_gl->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(float)), vertices.data(), GL_STATIC_DRAW);
    const GLsizei stride = GLsizei(floatsPerVertex * sizeof(float));
    m_gl->glEnableVertexAttribArray(0);
    m_gl->glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, stride, nullptr);
    if (floatsPerVertex == 5) {
        m_gl->glEnableVertexAttribArray(1);
        m_gl->glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<void*>(3 * sizeof(float)));
    }
    m_gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, gpu.indexBuffer);
    m_gl->glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(indices.size() * sizeof(GLuint)), indices.data(),
                       GL_STATIC_DRAW);
    m_gl->glBindVertexArray(0);
    gpu.indexCount = int(indices.size());
    if (item.kind() == ZN3DScene::Kind::Section) gpu.pointCount = 4;
    m_statistics.bufferUploads += 2;
    m_statistics.uploadsLastFrame += 2;
}

void ZN3DRenderer::uploadTexture(const QImage& image, GpuItem& gpu)
{
    QImage rgba = image.isNull() ? QImage(1, 1, QImage::Format_RGBA8888) : image;
    if (image.isNull()) rgba.fill(Qt::transparent);
    if (m_maxTextureSize > 0 && (rgba.width() > m_maxTextureSize || rgba.height() > m_maxTextureSize))
        rgba = rgba.scaled(m_maxTextureSize, m_maxTextureSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    rgba = rgba.convertToFormat(QImage::Format_RGBA8888);
    if (!gpu.texture) m_gl->glGenTextures(1, &gpu.texture);
    m_gl->glBindTexture(GL_TEXTURE_2D, gpu.texture);
    m_gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    m_gl->glPixelStorei(GL_UNPACK_ROW_LENGTH, rgba.bytesPerLine() / 4);
    // The first row of the image is the texture's t = 0, the corners' top edge.
    m_gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, rgba.width(), rgba.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                       rgba.constBits());
    m_gl->glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    m_gl->glGenerateMipmap(GL_TEXTURE_2D);
    m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    m_gl->glBindTexture(GL_TEXTURE_2D, 0);
    gpu.imageKey = image.cacheKey();
    ++m_statistics.textureUploads;
    ++m_statistics.uploadsLastFrame;
}

void ZN3DRenderer::setCommonState(const ZN3DViewerEngine& engine)
{
    const ZN3DCamera& camera = engine.camera();
    m_gl->glViewport(0, 0, camera.width(), camera.height());
    m_gl->glEnable(GL_DEPTH_TEST);
    m_gl->glDepthFunc(GL_LEQUAL);
    m_gl->glDepthMask(GL_TRUE);
    m_gl->glDisable(GL_CULL_FACE);
    m_gl->glDisable(GL_STENCIL_TEST);
    m_gl->glDisable(GL_SCISSOR_TEST);
    m_gl->glDisable(GL_BLEND);
    m_gl->glDisable(GL_DITHER);
    m_gl->glEnable(GL_PROGRAM_POINT_SIZE);
    m_gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void ZN3DRenderer::setDepthOffset(float offset)
{
    if (offset != 0.0f) {
        m_gl->glEnable(GL_POLYGON_OFFSET_FILL);
        m_gl->glPolygonOffset(offset, offset);
    } else {
        m_gl->glDisable(GL_POLYGON_OFFSET_FILL);
    }
}

void ZN3DRenderer::render(const ZN3DViewerEngine& engine)
{
    m_statistics.uploadsLastFrame = 0;
    m_statistics.trianglesLastFrame = 0;
    m_statistics.itemsLastFrame = 0;
    if (!m_ready) return;
    sweep(engine.scene());
    setCommonState(engine);
    const QColor background = engine.background();
    m_gl->glClearColor(background.redF(), background.greenF(), background.blueF(), 1.0f);
    m_gl->glClearDepth(1.0);
    m_gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    for (const ZN3DScene::Item* item : engine.drawOrder()) {
        const bool transparent = item->isTransparent();
        if (transparent) {
            // Blended over what is behind, written to no depth; the destination alpha stays
            // 1 so that the picture composes as an opaque widget.
            m_gl->glEnable(GL_BLEND);
            m_gl->glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
            m_gl->glDepthMask(GL_FALSE);
        }
        draw(engine, *item, sync(*item), transparent ? Pass::Transparent : Pass::Opaque, QColor());
        ++m_statistics.itemsLastFrame;
    }
    m_gl->glDisable(GL_BLEND);
    m_gl->glDepthMask(GL_TRUE);
    m_gl->glBindVertexArray(0);
    m_gl->glUseProgram(0);
    m_statistics.itemsOnGpu = int(m_items.size());
    ++m_statistics.frames;
}

void ZN3DRenderer::draw(const ZN3DViewerEngine& engine, const ZN3DScene::Item& item, const GpuItem& gpu, Pass pass,
                        const QColor& pickColour)
{
    const ZN3DCamera& camera = engine.camera();
    float modelView[16], projection[16];
    toGl(engine.modelViewOf(item), modelView);
    toGl(camera.projectionMatrix(), projection);
    const bool picking = pass == Pass::Pick;
    const float widening = picking ? kPickLineWidening : 0.0f;
    switch (item.kind()) {
    case ZN3DScene::Kind::Surface: {
        const auto& surface = std::get<ZN3DSurfaceItem>(item.content);
        QColor colour = surface.object->getPen().color();
        colour.setAlphaF(std::clamp(double(surface.object->getTransparency()), 0.0, 1.0));
        if (picking) colour = pickColour;
        if (surface.mode == ZN3DSurfaceItem::Mode::Points) {
            drawPoints(gpu, modelView, projection, colour, surface.pointSize + widening);
            break;
        }
        const Program& p = use(m_programs->mesh, modelView, projection, colour);
        m_gl->glUniform1i(p.roundPoints, 0);
        m_gl->glUniform1f(p.pointSize, 1.0f);
        m_gl->glUniform1i(p.perspective, camera.projection() == ZN3DCamera::Projection::Perspective);
        m_gl->glUniform1f(p.ambient, kAmbient);
        const bool wireframe = surface.mode == ZN3DSurfaceItem::Mode::Wireframe;
        m_gl->glUniform1i(p.lighting, !picking && !wireframe);
        m_gl->glBindVertexArray(gpu.vertexArray);
        if (wireframe) {
            m_gl->glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        } else {
            setDepthOffset(picking ? kPickSurfaceDepthOffset : kSurfaceDepthOffset);
            m_statistics.trianglesLastFrame += picking ? 0 : gpu.indexCount / 3;
        }
        m_gl->glDrawElements(GL_TRIANGLES, gpu.indexCount, GL_UNSIGNED_INT, nullptr);
        m_gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        setDepthOffset(0.0f);
        break;
    }
    case ZN3DScene::Kind::Polyline: {
        const auto& lines = std::get<ZN3DPolylineItem>(item.content);
        const QColor colour = picking ? pickColour : lines.colour;
        drawLines(gpu, modelView, projection, colour, lines.width + widening);
        if (lines.pointSize > 0.0f) drawPoints(gpu, modelView, projection, colour, lines.pointSize + widening);
        break;
    }
    case ZN3DScene::Kind::Box:
        drawLines(gpu, modelView, projection, picking ? pickColour : std::get<ZN3DBoxItem>(item.content).colour,
                  kBoxLineWidth + widening);
        break;
    case ZN3DScene::Kind::ReferencePoint: {
        const auto& point = std::get<ZN3DReferencePointItem>(item.content);
        drawLines(gpu, modelView, projection, picking ? pickColour : point.colour, point.width + widening);
        break;
    }
    case ZN3DScene::Kind::Section: {
        const auto& section = std::get<ZN3DSectionItem>(item.content);
        const Program& p = use(m_programs->section, modelView, projection, pickColour);
        m_gl->glUniform1i(p.image, 0);
        m_gl->glUniform1f(p.opacity, std::clamp(section.opacity, 0.0f, 1.0f));
        m_gl->glUniform1i(p.picking, picking);
        m_gl->glActiveTexture(GL_TEXTURE0);
        m_gl->glBindTexture(GL_TEXTURE_2D, gpu.texture);
        m_gl->glBindVertexArray(gpu.vertexArray);
        setDepthOffset(picking ? kPickSurfaceDepthOffset : kSurfaceDepthOffset);
        m_gl->glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
        setDepthOffset(0.0f);
        m_gl->glBindTexture(GL_TEXTURE_2D, 0);
        break;
    }
    }
}

const ZN3DRenderer::Program& ZN3DRenderer::use(const Program& p, const float* modelView,
                                                         const float* projection, const QColor& colour)
{
    p.program->bind();
    m_gl->glUniformMatrix4fv(p.modelView, 1, GL_FALSE, modelView);
    m_gl->glUniformMatrix4fv(p.projection, 1, GL_FALSE, projection);
    m_gl->glUniform4f(p.colour, colour.redF(), colour.greenF(), colour.blueF(), colour.alphaF());
    return p;
}

void ZN3DRenderer::drawLines(const GpuItem& gpu, const float* modelView, const float* projection,
                             const QColor& colour, float width)
{
    if (gpu.indexCount == 0) return;
    const Program& p = use(m_programs->line, modelView, projection, colour);
    GLint viewport[4] = {0, 0, 1, 1};
    m_gl->glGetIntegerv(GL_VIEWPORT, viewport);
    m_gl->glUniform2f(p.viewport, float(viewport[2]), float(viewport[3]));
    m_gl->glUniform1f(p.width, std::max(width, 1.0f));
    m_gl->glBindVertexArray(gpu.vertexArray);
    m_gl->glDrawElements(GL_LINES, gpu.indexCount, GL_UNSIGNED_INT, nullptr);
}

void ZN3DRenderer::drawPoints(const GpuItem& gpu, const float* modelView, const float* projection,
                              const QColor& colour, float size)
{
    if (gpu.pointCount == 0 || size <= 0.0f) return;
    const Program& p = use(m_programs->mesh, modelView, projection, colour);
    m_gl->glUniform1i(p.lighting, 0);
    m_gl->glUniform1i(p.roundPoints, 1);
    m_gl->glUniform1f(p.pointSize, size);
    m_gl->glBindVertexArray(gpu.vertexArray);
    m_gl->glDrawArrays(GL_POINTS, 0, gpu.pointCount);
}

bool ZN3DRenderer::ensurePickTarget(int width, int height)
{
    if (m_pickFramebuffer && m_pickWidth == width && m_pickHeight == height) return true;
    if (!m_pickFramebuffer) {
        m_gl->glGenFramebuffers(1, &m_pickFramebuffer);
        m_gl->glGenRenderbuffers(1, &m_pickColour);
        m_gl->glGenRenderbuffers(1, &m_pickDepth);
    }
    m_gl->glBindRenderbuffer(GL_RENDERBUFFER, m_pickColour);
    m_gl->glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
    m_gl->glBindRenderbuffer(GL_RENDERBUFFER, m_pickDepth);
    m_gl->glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    m_gl->glBindRenderbuffer(GL_RENDERBUFFER, 0);
    m_gl->glBindFramebuffer(GL_FRAMEBUFFER, m_pickFramebuffer);
    m_gl->glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_pickColour);
    m_gl->glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_pickDepth);
    const bool complete = m_gl->glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    m_pickWidth = complete ? width : 0;
    m_pickHeight = complete ? height : 0;
    return complete;
}

ZN3DViewerEngine::Hit ZN3DRenderer::pick(const ZN3DViewerEngine& engine, const core::vec2& screen, bool pickableOnly)
{
    ZN3DViewerEngine::Hit hit;
    const ZN3DCamera& camera = engine.camera();
    const int column = int(std::floor(screen.x)), row = camera.height() - 1 - int(std::floor(screen.y));
    if (!m_ready || column < 0 || column >= camera.width() || row < 0 || row >= camera.height()) return hit;
    GLint previous = 0;
    m_gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    if (!ensurePickTarget(camera.width(), camera.height())) {
        m_gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(previous));
        return hit;
    }
    m_gl->glBindFramebuffer(GL_FRAMEBUFFER, m_pickFramebuffer);
    sweep(engine.scene());
    setCommonState(engine);
    // Only the pixel is read: the drawing is cut to it, and items that cannot cover it
    // are left out.
    m_gl->glEnable(GL_SCISSOR_TEST);
    m_gl->glScissor(column, row, 1, 1);
    m_gl->glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    m_gl->glClearDepth(1.0);
    m_gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    const std::vector<const ZN3DScene::Item*> order = engine.drawOrder();
    for (size_t i = 0; i < order.size(); ++i)
        if ((!pickableOnly || order[i]->pickable) && engine.mayBeUnder(*order[i], screen))
            draw(engine, *order[i], sync(*order[i]), Pass::Pick, pickColourOf(int(i)));
    m_gl->glDisable(GL_SCISSOR_TEST);
    m_gl->glBindVertexArray(0);
    m_gl->glUseProgram(0);
    unsigned char rgba[4] = {0, 0, 0, 0};
    float depth = 1.0f;
    m_gl->glPixelStorei(GL_PACK_ALIGNMENT, 1);
    m_gl->glReadPixels(column, row, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    m_gl->glReadPixels(column, row, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    m_gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(previous));
    const int index = (rgba[0] | (rgba[1] << 8) | (rgba[2] << 16)) - 1;
    if (index < 0 || index >= int(order.size()) || depth >= 1.0f) return hit;
    const ZN3DScene::Item& item = *order[size_t(index)];
    core::vec3 world;
    if (!camera.unproject({column + 0.5, row + 0.5, double(depth)}, world)) return hit;
    hit = {item.id, world, double(depth)};
    // Surfaces were drawn pushed back: the point is taken on the item's own triangles
    // along the same line of sight when they are met there.
    if (item.kind() == ZN3DScene::Kind::Surface || item.kind() == ZN3DScene::Kind::Section) {
        const ZN3DViewerEngine::Hit exact = engine.hitTestItem(item.id, {column + 0.5, std::floor(screen.y) + 0.5});
        if (exact.isHit()) hit = exact;
    }
    return hit;
}
