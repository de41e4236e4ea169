#!/usr/bin/env python3
"""Generates the GL entry-point list and the control's pass-through declarations.

Reads the GL 1.0/1.1 part of the system's <GL/gl.h> (everything before the
OpenGL 1.2 section) and the few GLU functions that the program uses from
<GL/glu.h>, and writes:

  glctrl/generated/gl_api.list       one X-macro line per entry point (the one list
                                     that the dispatch table, the loader, the tracing
                                     table and the pass-through methods are expanded from)
  glctrl/generated/gl_enums.inc      the GL and GLU names that the tracing table prints
  glctrl/generated/gl_passthrough.h  class GLPassThrough: the control's ogl*/oglu*
                                     pass-through methods

The outputs are committed, so python is only needed after changing this script:
    python3 scripts/gen_gl_api.py [--gl-header PATH] [--glu-header PATH]
"""

import argparse
import os
import re
import sys

GLU_FUNCTIONS = [
    "gluLookAt", "gluPickMatrix", "gluNewTess", "gluDeleteTess", "gluTessCallback",
    "gluTessBeginPolygon", "gluTessBeginContour", "gluTessVertex", "gluTessEndContour",
    "gluTessEndPolygon", "gluTessProperty", "gluTessNormal",
]

# Entry points whose control method is a hand-written recording method (their
# ogl* method has the stream's argument types and is not generated).
RECORDED = {
    "glBegin", "glEnd", "glColor3f", "glVertex3f", "glMaterialfv", "glPolygonMode",
    "glFrontFace", "glNormal3f", "glEdgeFlag",
}

# GLenum parameters whose small values (0, 1) several GL names share: the name
# group that decides there. Other GLenum parameters print 0 and 1 in decimal.
ENUM_GROUPS = {
    "glBegin.mode": "kPrimitive",
    "glDrawArrays.mode": "kPrimitive",
    "glDrawElements.mode": "kPrimitive",
    "glBlendFunc.sfactor": "kBlendFactor",
    "glBlendFunc.dfactor": "kBlendFactor",
    "glStencilOp.fail": "kStencilOp",
    "glStencilOp.zfail": "kStencilOp",
    "glStencilOp.zpass": "kStencilOp",
    "glDrawBuffer.mode": "kDrawBuffer",
    "glReadBuffer.mode": "kDrawBuffer",
}

# Scalar arguments that are not printed by their declared type.
SCALAR_OVERRIDES = {
    # The value of these parameters is a GL name for some pnames only.
    "glTexParameteri.param": "ParamValue(param, pname)",
    "glTexParameterf.param": "ParamValue(param, pname)",
    "glTexEnvi.param": "ParamValue(param, pname)",
    "glTexEnvf.param": "ParamValue(param, pname)",
    "glTexGeni.param": "ParamValue(param, pname)",
    "glTexGenf.param": "ParamValue(param, pname)",
    "glTexGend.param": "ParamValue(param, pname)",
    "glFogi.param": "ParamValue(param, pname)",
    "glFogf.param": "ParamValue(param, pname)",
    # 1 to 4 are component counts, anything else a format name.
    "glTexImage1D.internalFormat": "InternalFormat(internalFormat)",
    "glTexImage2D.internalFormat": "InternalFormat(internalFormat)",
    "glCopyTexImage1D.internalformat": "InternalFormat(internalformat)",
    "glCopyTexImage2D.internalformat": "InternalFormat(internalformat)",
    # The winding rule is a GLU name passed as a double.
    "gluTessProperty.data": "TessProperty(data, which)",
    # Texture names count up from 1 in tracing mode, like display lists.
    "glGenTextures.textures": "NewTextureNames(textures, n)",
}

# Element counts of input arrays, where the name does not say it.
ARRAY_COUNTS = {
    "glIndexdv.c": "1", "glIndexfv.c": "1", "glIndexiv.c": "1", "glIndexsv.c": "1",
    "glIndexubv.c": "1",
    "glEdgeFlagv.flag": "1",
    "glRectdv.v1": "2", "glRectdv.v2": "2", "glRectfv.v1": "2", "glRectfv.v2": "2",
    "glRectiv.v1": "2", "glRectiv.v2": "2", "glRectsv.v1": "2", "glRectsv.v2": "2",
    "glLoadMatrixd.m": "16", "glLoadMatrixf.m": "16",
    "glMultMatrixd.m": "16", "glMultMatrixf.m": "16",
    "glClipPlane.equation": "4",
    "glPolygonStipple.mask": "128",
    "glMaterialfv.params": "MaterialCount(pname)", "glMaterialiv.params": "MaterialCount(pname)",
    "glLightfv.params": "LightCount(pname)", "glLightiv.params": "LightCount(pname)",
    "glLightModelfv.params": "LightModelCount(pname)",
    "glLightModeliv.params": "LightModelCount(pname)",
    "glFogfv.params": "FogCount(pname)", "glFogiv.params": "FogCount(pname)",
    "glTexEnvfv.params": "TexEnvCount(pname)", "glTexEnviv.params": "TexEnvCount(pname)",
    "glTexParameterfv.params": "TexParameterCount(pname)",
    "glTexParameteriv.params": "TexParameterCount(pname)",
    "glTexGendv.params": "TexGenCount(pname)", "glTexGenfv.params": "TexGenCount(pname)",
    "glTexGeniv.params": "TexGenCount(pname)",
    "glPixelMapfv.values": "mapsize", "glPixelMapuiv.values": "mapsize",
    "glPixelMapusv.values": "mapsize",
    "glDeleteTextures.textures": "n",
    "glPrioritizeTextures.textures": "n", "glPrioritizeTextures.priorities": "n",
    "glAreTexturesResident.textures": "n",
    "glBitmap.bitmap": "BitmapBytes(width, height)",
    "gluPickMatrix.viewport": "4",
    "gluTessVertex.location": "3",
}

# Input arrays whose element type is given by a GLenum argument.
TYPED_ARRAYS = {
    "glCallLists.lists": "Typed(lists, n, type)",
    "glDrawElements.indices": "Typed(indices, count, type)",
}

# Output arrays: how many elements GL writes (the tracing table writes zeros
# there, so that callers read defined values). Missing ones are not sized.
OUT_COUNTS = {
    "glGetBooleanv.params": "GetCount(pname)", "glGetDoublev.params": "GetCount(pname)",
    "glGetFloatv.params": "GetCount(pname)", "glGetIntegerv.params": "GetCount(pname)",
    "glGetLightfv.params": "LightCount(pname)", "glGetLightiv.params": "LightCount(pname)",
    "glGetMaterialfv.params": "MaterialCount(pname)",
    "glGetMaterialiv.params": "MaterialCount(pname)",
    "glGetTexEnvfv.params": "TexEnvCount(pname)", "glGetTexEnviv.params": "TexEnvCount(pname)",
    "glGetTexParameterfv.params": "TexParameterCount(pname)",
    "glGetTexParameteriv.params": "TexParameterCount(pname)",
    "glGetTexGendv.params": "TexGenCount(pname)", "glGetTexGenfv.params": "TexGenCount(pname)",
    "glGetTexGeniv.params": "TexGenCount(pname)",
    "glGetTexLevelParameterfv.params": "1", "glGetTexLevelParameteriv.params": "1",
    "glGetClipPlane.equation": "4",
    "glGetPolygonStipple.mask": "128",
    "glAreTexturesResident.residences": "n",
    "glGetPointerv.params": "1",
}

# GLU pointers that are neither arrays nor outputs.
GLU_POINTERS = {
    "gluTessBeginPolygon.data": "Data(data)",
    "gluTessVertex.data": "Data(data)",
}

INT_TYPES = {"GLint", "GLsizei", "GLuint", "GLshort", "GLushort", "GLbyte", "GLubyte"}
REAL_TYPES = {"GLfloat", "GLclampf", "GLdouble", "GLclampd"}
VECTOR_NAME = re.compile(r"^gl[A-Z]\w*?([1-4])(?:b|s|i|f|d|ub|us|ui)v$")


def parse_functions(text):
    found = []
    for ret, name, params in re.findall(
            r"GLAPI\s+([\w\s\*]+?)\s*GLAPIENTRY\s+(\w+)\s*\((.*?)\)\s*;", text, re.S):
        ret = " ".join(ret.split()).replace(" *", "*")
        args = []
        params = " ".join(params.split())
        if params not in ("", "void"):
            for p in params.split(","):
                m = re.match(r"(.*?)(\w+)$", p.strip())
                ptype = " ".join(m.group(1).split()).replace(" *", "*")
                args.append((ptype, m.group(2)))
        found.append((ret, name, args))
    return found


def trace_expr(func, ptype, pname):
    key = f"{func}.{pname}"
    if key in SCALAR_OVERRIDES:
        return SCALAR_OVERRIDES[key]
    if key in TYPED_ARRAYS:
        return TYPED_ARRAYS[key]
    if key in GLU_POINTERS:
        return GLU_POINTERS[key]
    if ptype == "GLUtesselator*":
        return f"Tess({pname})"
    if ptype == "_GLUfuncptr":
        return f"Callback({pname})"
    if ptype == "GLenum":
        return f"Enum({pname}, {ENUM_GROUPS.get(key, 'kAnyName')})"
    if ptype == "GLboolean":
        return f"Bool({pname})"
    if ptype == "GLbitfield":
        group = "kClientBits" if func == "glPushClientAttrib" else "kAttribBits"
        return f"Bits({pname}, {group})"
    if ptype in REAL_TYPES:
        return f"Real({pname})"
    if ptype in INT_TYPES:
        return f"Int({pname})"
    if ptype.endswith("*"):
        count = ARRAY_COUNTS.get(key)
        if count is None:
            m = VECTOR_NAME.match(func)
            if m and ptype.startswith("const"):
                count = m.group(1)
        if key in OUT_COUNTS:
            return f"Out({pname}, {OUT_COUNTS[key]})"
        if count is not None:
            if ptype.startswith("const GLboolean"):
                return f"BoolArray({pname}, {count})"
            return f"Array({pname}, {count})"
        if ptype.startswith("const"):
            return f"Data({pname})"
        return f"Out({pname}, 0)"
    sys.exit(f"no trace rule for {key} of type {ptype}")


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--gl-header", default="/usr/include/GL/gl.h")
    ap.add_argument("--glu-header", default="/usr/include/GL/glu.h")
    ap.add_argument("--out", default=os.path.join(os.path.dirname(__file__), "..", "glctrl", "generated"))
    a = ap.parse_args()

    gl_text = open(a.gl_header).read()
    gl_text = gl_text[:gl_text.index(" * OpenGL 1.2")]  # GL 1.0 and 1.1 only
    glu_text = open(a.glu_header).read()

    gl_funcs = parse_functions(gl_text)
    glu_all = {f[1]: f for f in parse_functions(glu_text)}
    glu_funcs = [glu_all[n] for n in GLU_FUNCTIONS]

    header = ("// Generated by scripts/gen_gl_api.py from <GL/gl.h> (GL 1.0/1.1) and <GL/glu.h>;\n"
              "// do not edit.\n")

    # The entry-point list.
    lines = [header,
             "//\n"
             "// QUELO_GL_ENTRY(return type, name, (parameters), (arguments), (trace))\n"
             "// trace holds one formatter per argument (see gl_trace.cpp).\n"
             "// QUELO_GL_ENTRY_RECORDED marks the entry points whose control method is a\n"
             "// hand-written recording method; it defaults to QUELO_GL_ENTRY.\n"
             "#ifndef QUELO_GL_ENTRY_RECORDED\n"
             "#define QUELO_GL_ENTRY_RECORDED QUELO_GL_ENTRY\n"
             "#endif\n"]
    passthrough = [header,
                   "//\n"
                   "// GLPassThrough: the control's pass-through methods, oglXxx for the OpenGL 1.1\n"
                   "// command set and the named GLU calls. Each calls its entry point through the\n"
                   "// dispatch table and records nothing. OpenGL_Ctrl inherits them; the\n"
                   "// definitions are expanded from gl_api.list in glctrl/gl_passthrough.cpp.\n"
                   "#pragma once\n\n"
                   "#include <GL/gl.h>\n"
                   "#include <GL/glu.h>\n\n"
                   "namespace quelo {\n\n"
                   "class GLPassThrough {\n"
                   " public:\n"]
    for ret, name, args in gl_funcs + glu_funcs:
        params = ", ".join(f"{t} {n}" for t, n in args)
        names = ", ".join(n for _, n in args)
        trace = ", ".join(trace_expr(name, t, n) for t, n in args)
        macro = "QUELO_GL_ENTRY_RECORDED" if name in RECORDED else "QUELO_GL_ENTRY"
        lines.append(f"{macro}({ret}, {name}, ({params}), ({names}), ({trace}))\n")
        if name not in RECORDED:
            passthrough.append(f"  {ret} o{name}({params});\n")
    passthrough.append("};\n\n}  // namespace quelo\n")
    lines.append("#undef QUELO_GL_ENTRY_RECORDED\n#undef QUELO_GL_ENTRY\n")

    # The names: plain GL names, the bit names, and the GLU tessellator names.
    enums = [header,
             "//\n// QUELO_GL_NAME(name): a GL name printed wherever its value is unique.\n"
             "// QUELO_GL_BIT(group, name): a bit of glClear/glPushAttrib masks (kAttribBits)\n"
             "// or of glPushClientAttrib masks (kClientBits).\n"
             "// QUELO_GL_GROUP_NAME(group, name): a name for a value that several names share,\n"
             "// printed only for parameters of that group.\n"]
    by_value = {}
    skip = re.compile(r"^GL_(VERSION_\d_\d|ARB_\w+|TRUE|FALSE)$")
    bit_names = []
    for n, v in re.findall(r"#define\s+(GL_\w+)\s+(0x[0-9A-Fa-f]+|\d+)\b", gl_text):
        if skip.match(n):
            continue
        if n.endswith("_BIT") or n.endswith("_BITS"):
            bit_names.append(n)
            continue
        by_value.setdefault(int(v, 0), []).append(n)
    preferred = {0x0BF1: "GL_INDEX_LOGIC_OP", 0x1003: "GL_TEXTURE_INTERNAL_FORMAT"}
    groups = {
        "kPrimitive": ["GL_POINTS", "GL_LINES"],
        "kBlendFactor": ["GL_ZERO", "GL_ONE"],
        "kStencilOp": ["GL_ZERO"],
        "kDrawBuffer": ["GL_NONE"],
    }
    for v, ns in sorted(by_value.items()):
        if len(ns) == 1:
            enums.append(f"QUELO_GL_NAME({ns[0]})\n")
        elif v in preferred:
            enums.append(f"QUELO_GL_NAME({preferred[v]})\n")
    for n, v in re.findall(r"#define\s+(GLU_TESS_\w+)\s+(\d+)\b", glu_text):
        if not re.match(r"GLU_TESS_ERROR\d", n) and int(v) >= 100000:
            enums.append(f"QUELO_GL_NAME({n})\n")
    for g, ns in groups.items():
        for n in ns:
            enums.append(f"QUELO_GL_GROUP_NAME({g}, {n})\n")
    for n in bit_names:
        if n.endswith("_BITS"):
            continue  # all bits: printed by the tracing table itself
        group = "kClientBits" if n.startswith("GL_CLIENT_") else "kAttribBits"
        enums.append(f"QUELO_GL_BIT({group}, {n})\n")

    for fname, content in (("gl_api.list", lines), ("gl_enums.inc", enums),
                           ("gl_passthrough.h", passthrough)):
        with open(os.path.join(a.out, fname), "w") as f:
            f.writelines(content)
    print(f"{len(gl_funcs)} GL and {len(glu_funcs)} GLU entry points")


if __name__ == "__main__":
    main()
