#pragma once
// The GLSL 330 core sources of the 3D renderer's programs (see ZN3DRenderer).
//
// Every program takes the vertex position at attribute 0, in the item's local
// coordinates, and the uniforms "modelView" and "projection". The mesh program also
// draws points ("pointSize", "roundPoints") and lights surfaces ("lighting",
// "perspective"); the line program widens lines to "width" pixels of a viewport of
// "viewport" pixels; the section program reads texture coordinates at attribute 1 and
// the texture "image", draws at "opacity" and, when "picking" is 1, in "colour".
namespace zn3dshaders {

extern const char* const kMeshVertex;
extern const char* const kMeshFragment;
extern const char* const kLineVertex;
extern const char* const kLineGeometry;
extern const char* const kLineFragment;
extern const char* const kSectionVertex;
extern const char* const kSectionFragment;

} // namespace zn3dshaders
