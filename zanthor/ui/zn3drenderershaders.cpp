#include "zn3drenderershaders.h"

namespace zn3dshaders {

const char* const kMeshVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
uniform mat4 modelView;
uniform mat4 projection;
uniform float pointSize;
out vec3 eyePosition;
void main()
{
    vec4 eye = modelView * vec4(position, 1.0);
    eyePosition = eye.xyz;
    gl_Position = projection * eye;
    gl_PointSize = pointSize;
}
)";

// Flat shading from the screen derivatives of the eye position: no normals to upload,
// and triangles of either orientation are lit alike. The normal is turned towards the
// eye, so both sides of a surface are lit.
const char* const kMeshFragment = R"(#version 330 core
in vec3 eyePosition;
uniform vec4 colour;
uniform int lighting;
uniform int roundPoints;
uniform int perspective;
uniform float ambient;
out vec4 fragment;
const vec3 lightDirection = normalize(vec3(-0.35, 0.5, 1.0));
void main()
{
    if (roundPoints == 1) {
        vec2 fromCentre = gl_PointCoord - vec2(0.5);
        if (dot(fromCentre, fromCentre) > 0.25) discard;
    }
    if (lighting == 0) {
        fragment = colour;
        return;
    }
    vec3 normal = cross(dFdx(eyePosition), dFdy(eyePosition));
    float length2 = dot(normal, normal);
    normal = length2 > 0.0 ? normal * inversesqrt(length2) : vec3(0.0, 0.0, 1.0);
    vec3 toEye = perspective == 1 ? normalize(-eyePosition) : vec3(0.0, 0.0, 1.0);
    if (dot(normal, toEye) < 0.0) normal = -normal;
    float diffuse = max(dot(normal, lightDirection), 0.0);
    fragment = vec4(colour.rgb * (ambient + (1.0 - ambient) * diffuse), colour.a);
}
)";

const char* const kLineVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
uniform mat4 modelView;
uniform mat4 projection;
void main()
{
    gl_Position = projection * (modelView * vec4(position, 1.0));
}
)";

// Each segment, clipped to the near plane, becomes a quad of `width` pixels with square
// caps, so that wide lines look the same on every driver (core profiles may refuse
// glLineWidth above 1).
const char* const kLineGeometry = R"(#version 330 core
layout(lines) in;
layout(triangle_strip, max_vertices = 4) out;
uniform vec2 viewport;
uniform float width;
void main()
{
    vec4 a = gl_in[0].gl_Position;
    vec4 b = gl_in[1].gl_Position;
    float da = a.z + a.w;
    float db = b.z + b.w;
    if (da < 0.0 && db < 0.0) return;
    if (da < 0.0) a = mix(a, b, da / (da - db));
    else if (db < 0.0) b = mix(b, a, db / (db - da));
    vec2 halfViewport = viewport * 0.5;
    vec2 along = b.xy / b.w * halfViewport - a.xy / a.w * halfViewport;
    float len = length(along);
    along = len > 1e-6 ? along / len : vec2(1.0, 0.0);
    vec2 across = vec2(-along.y, along.x) * (width * 0.5) / halfViewport;
    vec2 cap = along * (width * 0.5) / halfViewport;
    gl_Position = vec4(a.xy + (across - cap) * a.w, a.zw); EmitVertex();
    gl_Position = vec4(a.xy + (-across - cap) * a.w, a.zw); EmitVertex();
    gl_Position = vec4(b.xy + (across + cap) * b.w, b.zw); EmitVertex();
    gl_Position = vec4(b.xy + (-across + cap) * b.w, b.zw); EmitVertex();
    EndPrimitive();
}
)";

const char* const kLineFragment = R"(#version 330 core
uniform vec4 colour;
out vec4 fragment;
void main()
{
    fragment = colour;
}
)";

const char* const kSectionVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec2 textureCoordinates;
uniform mat4 modelView;
uniform mat4 projection;
out vec2 imageCoordinates;
void main()
{
    imageCoordinates = textureCoordinates;
    gl_Position = projection * (modelView * vec4(position, 1.0));
}
)";

const char* const kSectionFragment = R"(#version 330 core
in vec2 imageCoordinates;
uniform sampler2D image;
uniform float opacity;
uniform int picking;
uniform vec4 colour;
out vec4 fragment;
void main()
{
    vec4 texel = texture(image, imageCoordinates);
    if (texel.a < 0.5) discard;
    fragment = picking == 1 ? colour : vec4(texel.rgb, opacity);
}
)";

} // namespace zn3dshaders
