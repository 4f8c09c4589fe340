// The stand-in for the Meshcaster library: the model that it records.
#include "mclmodel.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

struct PlatformModel : testing::Test {
    McMatrix4d *matrix = McCreateMatrix();
    std::vector<McClump *> ended;
    std::string texture;

    void SetUp() override
    {
        McClearErrors();
    }
    void TearDown() override
    {
        Free();
        McDestroyMatrix(matrix);
    }
    void Free()
    {
        McFreeModel(ended.empty() ? nullptr : ended.back());
        ended.clear();
    }
    void Call(char call)
    {
        McUV uv = {0.25f, 0.5f};
        McClump *clump = nullptr;
        switch (call) {
        case '[': McModelBegin(); break;
        case ']': McModelEnd(); break;
        case '(': McClumpBegin(); break;
        case ')':
            McClumpEnd(&clump);
            if (clump)
                ended.push_back(clump);
            break;
        case '{': McTransformBegin(); break;
        case '}': McTransformEnd(); break;
        case '<': McProtoBegin("wheel"); break;
        case '>': McProtoEnd(); break;
        case 'i': McProtoInstance("wheel"); break;
        case 'v': McVertex(1, 2, 3); break;
        case 'u': McVertexExt(1, 2, 3, &uv, nullptr); break;
        case 't': McTriangle(1, 2, 3); break;
        case 'n': McSetSurfaceTexture(nullptr); break;
        case 'a': McSetSurfaceTexture((texture = "BRICK.GIF").c_str()); break;
        case 'b': McSetSurfaceTextureExt((texture = "BRICK.GIF").c_str(), "MASK.GIF"); break;
        case '?': McProtoBegin(nullptr); break;
        case '#': McTransformCTM(nullptr); break;
        case 'g': McSetTag(3); break;
        case 'h': McSetHints(mcHS); break;
        case '!': McProtoInstance(nullptr), McTransformCTM(nullptr), McClumpEnd(nullptr); break;
        default: McSetMatrixElement(matrix, 3, 0, static_cast<float>(call - '0')), McTransformCTM(matrix);
        }
        texture = "gone";
    }
    // Makes one call for each character; a digit is a placement at that x.
    void Tell(const std::string &calls)
    {
        for (char call : calls)
            Call(call);
    }
};

static McClumpView View(const McClump *clump)
{
    McClumpView view = {};
    EXPECT_EQ(McGetClump(clump, &view), 1);
    return view;
}

TEST_F(PlatformModel, ClumpsStandInTheOrderTheyBeganAtTheProductOfTheirPlacements)
{
    Tell("[{");
    const float quarterTurn[2][2] = {{0, 1}, {-1, 0}}; // a product in the wrong order gives another position
    for (int r = 0; r < 2; ++r)
        for (int c = 0; c < 2; ++c)
            McSetMatrixElement(matrix, r, c, quarterTurn[r][c]);
    Tell("9(");
    McSetTag(7), McSetHints(mcHS | mcEDITABLE);
    Tell("21()())}()]");
    EXPECT_EQ(McErrorCount(), 0u) << McFirstError();
    ASSERT_EQ(ended.size(), 4u);
    const McClumpView first = View(ended[0]), second = View(ended[1]), outer = View(ended[2]);
    EXPECT_EQ(outer.tag * 10 + outer.hints, 76);
    EXPECT_EQ(outer.firstChild, ended[0]);
    EXPECT_EQ(first.nextSibling, ended[1]);
    EXPECT_EQ(second.nextSibling, nullptr);
    EXPECT_EQ(second.parent, ended[2]);
    EXPECT_EQ(outer.nextSibling, ended[3]);
    EXPECT_EQ(first.placement[12], 1); // replaced, not multiplied
    EXPECT_EQ(std::vector<double>(first.world + 12, first.world + 15), (std::vector<double>{9, 1, 0}));
    EXPECT_EQ((std::vector<double>{first.world[3], first.world[7], first.world[11], first.world[15]}),
              (std::vector<double>{0, 0, 0, 1}));
    EXPECT_EQ(View(ended[3]).world[12], 0); // the saved placement is restored
    McModelView model;
    ASSERT_EQ(McGetModel(ended[1], &model), 1);
    EXPECT_EQ(model.firstClump, ended[2]);
    EXPECT_EQ(model.clumpCount, 4u);
}

TEST_F(PlatformModel, EveryScopeHasItsOwnPlacementAndItsOwnVertices)
{
    Tell("[5(v4{2u(vvvtu)}vt)]");
    EXPECT_EQ(McErrorCount(), 0u) << McFirstError();
    const McGeometryView inner = View(ended[0]).geometry, outer = View(ended[1]).geometry;
    ASSERT_EQ(inner.vertexCount, 4u);
    ASSERT_EQ(outer.vertexCount, 3u);
    ASSERT_EQ(inner.faceCount + outer.faceCount, 2u);
    EXPECT_EQ(inner.points[0].x, 1);
    const double x[] = {1, 3, 5};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(outer.points[i].x, x[i]) << i;
        EXPECT_EQ(outer.hasUV[i], i == 1) << i;
        EXPECT_EQ(outer.faces[0].vertices[i], i + 1);
    }
    EXPECT_EQ(outer.points[0].y * 10 + outer.points[0].z, 23);
    EXPECT_EQ(outer.uvs[1].u + outer.uvs[1].v, 0.75f);
    EXPECT_EQ(inner.hasUV[2] * 10 + inner.hasUV[3], 1);
}

TEST_F(PlatformModel, InstancesTakeTheLastPrototypeOfTheirName)
{
    Tell("[<v><vvvt>");
    EXPECT_EQ(McErrorCount(), 1u); // for the second prototype of that name
    Tell("(vv4ivt");
    McProtoInstance("nowhere");
    Tell(")]");
    EXPECT_EQ(McErrorCount(), 1u);
    McInstanceView instance;
    McPrototypeView prototype;
    ASSERT_EQ(McGetInstance(ended[0], 0, &instance), 1);
    EXPECT_STREQ(instance.name, "wheel");
    EXPECT_EQ(instance.placement[12], 4);
    ASSERT_EQ(McGetPrototype(ended[0], static_cast<size_t>(instance.prototype), &prototype), 1);
    EXPECT_EQ(prototype.geometry.faceCount, 1u);
    ASSERT_EQ(McGetInstance(ended[0], 1, &instance), 1);
    EXPECT_EQ(instance.prototype, -1);
    EXPECT_EQ(McGetInstance(ended[0], 2, &instance) + McGetPrototype(ended[0], 2, &prototype), 0);
    EXPECT_EQ(View(ended[0]).geometry.vertexCount, 3u);
}

TEST_F(PlatformModel, FacesShareEqualSurfacesAndTheStateOutlivesItsScope)
{
    Tell("[(vvvb");
    McSetSurface(0.5f, 1.5f, 2.5f), McSetSurfaceColor(3.5f, 4.5f, 5.5f), McSetSurfaceOpacity(6.5f);
    McSetSurfaceGeometrySampling(mcWIREFRAME), McSetSurfaceLightSampling(mcFACET);
    McSetSurfaceTextureModes(mcLIT | mcFILTER);
    Tell("(vvvtat)tntbt)]");
    EXPECT_EQ(McErrorCount(), 0u) << McFirstError();
    McModelView model;
    ASSERT_EQ(McGetModel(ended[0], &model), 1);
    ASSERT_EQ(model.surfaceCount, 3u);
    const McFace *inner = View(ended[0]).geometry.faces, *outer = View(ended[1]).geometry.faces;
    EXPECT_EQ(outer[0].surface, inner[1].surface);
    EXPECT_EQ(outer[2].surface, inner[0].surface);
    EXPECT_EQ(model.surfaces[outer[1].surface].texture, nullptr);
    EXPECT_EQ(model.surfaces[outer[0].surface].mask, nullptr); // a texture alone removes the mask
    const McSurface &full = model.surfaces[inner[0].surface];
    EXPECT_EQ((std::vector<float>{full.ambient, full.diffuse, full.specular, full.color[0], full.color[1],
                                  full.color[2], full.opacity}),
              (std::vector<float>{0.5f, 1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f}));
    EXPECT_EQ(full.geometrySampling * 100 + full.lightSampling * 10 + full.textureModes, 215);
    EXPECT_STREQ(full.texture, "BRICK.GIF");
    EXPECT_STREQ(full.mask, "MASK.GIF");
}

TEST_F(PlatformModel, CallsOutOfOrderAreCountedAndTheFirstIsNamed)
{
    const struct {
        const char *calls;
        size_t errors;
        const char *first;
    } cases[] = {
        {"v({<an]", 7, "McVertex: no model is open"},
        {"[[]]", 2, "McModelBegin: a model is open already"},
        {"t", 1, "McTriangle: no model is open"},
        {"[t]", 1, "McTriangle: no clump or prototype is open"},
        {"[vt(vvt)]", 3, "McVertex: no clump or prototype is open"},
        {"[()(])", 2, "McModelEnd: a clump or a prototype is still open"},
        {"[(]", 1, "McModelEnd: a clump or a prototype is still open"},
        {"[{(})]", 2, "McTransformEnd: no placement of this scope is saved"},
        {"[({)}]", 2, "McClumpEnd: a saved placement wasn't brought back"},
        {"[<(i)>]", 3, "McClumpBegin: a prototype is open"},
        {"[<<>>(<)>]", 4, "McProtoBegin: a clump or a prototype is open"},
        {"[(!]", 3, "McProtoInstance: name is null"},
        {"[?]", 1, "McProtoBegin: name is null"},
        {"{", 1, "McTransformBegin: no model is open"},
        {">", 1, "McProtoEnd: no model is open"},
        {"[#]", 1, "McTransformCTM: matrix is null"},
        {"[{]", 1, "McModelEnd: a saved placement wasn't brought back"},
        {"[gh<>]", 2, "McSetTag: no clump is open"},
        {"[<hg>]", 2, "McSetHints: a prototype is open"},
    };
    for (const auto &c : cases) {
        McClearErrors();
        Tell(c.calls);
        EXPECT_EQ(McErrorCount(), c.errors) << c.calls;
        EXPECT_STREQ(McFirstError(), c.first) << c.calls;
        Free();
    }
    const std::pair<void (*)(), const char *> setters[] = {
        {[] { McSetSurface(1, 1, 1); }, "McSetSurface"},
        {[] { McSetSurfaceColor(1, 1, 1); }, "McSetSurfaceColor"},
        {[] { McSetSurfaceOpacity(1); }, "McSetSurfaceOpacity"},
        {[] { McSetSurfaceGeometrySampling(mcSOLID); }, "McSetSurfaceGeometrySampling"},
        {[] { McSetSurfaceLightSampling(mcFACET); }, "McSetSurfaceLightSampling"},
        {[] { McSetSurfaceTextureModes(mcLIT); }, "McSetSurfaceTextureModes"},
        {[] { McSetSurfaceTexture("A"); }, "McSetSurfaceTexture"},
        {[] { McSetSurfaceTextureExt("A", "B"); }, "McSetSurfaceTextureExt"}};
    for (const auto &[set, name] : setters) {
        McClearErrors();
        set();
        EXPECT_EQ(McFirstError(), std::string(name) + ": no model is open");
    }
}

TEST_F(PlatformModel, NumbersOutOfRangeAndMissingNamesAreCounted)
{
    Tell("[(vvv");
    for (const int outside : {0, 4})
        McTriangle(outside, 1, 2), McTriangle(1, outside, 2), McTriangle(1, 2, outside);
    EXPECT_EQ(McErrorCount(), 6u);
    McSetSurfaceTextureExt(nullptr, "B"), McSetSurfaceTextureExt("A", nullptr);
    EXPECT_EQ(McErrorCount(), 8u);
    McClearErrors();
    McSetSurfaceTextureExt(nullptr, "B");
    EXPECT_STREQ(McFirstError(), "McSetSurfaceTextureExt: name or mask is null");
    McSetSurfaceGeometrySampling(77), McSetSurfaceLightSampling(77), McSetSurfaceTextureModes(~0);
    McSetHints(~0);
    Tell(")]");
    EXPECT_EQ(McErrorCount(), 5u);
    McClearErrors();
    for (int outside : {-1, 4})
        McSetMatrixElement(matrix, outside, 0, 1), McSetMatrixElement(matrix, 0, outside, 1);
    EXPECT_EQ(McErrorCount(), 4u);
}

TEST_F(PlatformModel, AModelIsFreedWhileAnotherIsOpen)
{
    Tell("[()]");
    McClump *const first = ended.front();
    Tell("[(vvv");
    McFreeModel(first);
    Tell("t)]");
    EXPECT_EQ(McErrorCount(), 0u) << McFirstError();
    EXPECT_EQ(View(ended.back()).geometry.faceCount, 1u);
}
