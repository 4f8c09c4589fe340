// Keys become the text of a .vue file: the placement of each object in the world, for each frame.
#include <algorithm>
#include <charconv>
#include <map>

#include "parts.h"

constexpr auto kind = Mc3dsRestoreKind::Motion;
constexpr uint64_t placementsMost = 4194304; // of all objects in all frames; more is beyond what readers hold

static void AppendNumber(std::string *text, double number)
{
    char digits[32];
    const auto rounded = static_cast<float>(number == 0.0 ? 0.0 : number); // no -0
    const auto [end, failure] = std::to_chars(digits, digits + sizeof digits, rounded);
    text->push_back(' ');
    text->append(digits, failure == std::errc() ? end : digits);
}

static std::string Quoted(std::string_view name)
{
    std::string text = "\"";
    for (const char c : name) {
        if (c == '"' || c == '\\')
            text.push_back('\\');
        text.push_back(c);
    }
    return text + '"';
}

static void AppendTransform(std::string *text, const std::string &name, const Mc3dsMatrix &matrix)
{
    text->append("transform ").append(name);
    for (const Mc3dsPoint &row : matrix.rows)
        for (const double number : row)
            AppendNumber(text, number);
    text->push_back('\n');
}

// An object of the .vue file.
struct Actor {
    size_t node;
    std::string name;
    Mc3dsMatrix before; // from its own space to that of the node
};

static bool Moves(const Mc3dsNode &node)
{
    return !node.isDamaged &&
           (Mc3dsTrackMoves(node.positions) || Mc3dsTrackMoves(node.turns) || Mc3dsTrackMoves(node.scales));
}

// The objects of all trees in which something moves, in the order of the file: an output needs all of them.
// moving counts those that move by keys of their own or of what they hang on.
static std::vector<Actor> FindActors(const Mc3dsKeyframer &keyframer, std::vector<bool> *moving)
{
    std::vector<size_t> roots(keyframer.nodes.size());
    std::vector<bool> isLive(keyframer.nodes.size());
    moving->assign(keyframer.nodes.size(), false);
    for (const size_t i : keyframer.parentsFirst) {
        const Mc3dsNode &node = keyframer.nodes[i];
        const bool stays = node.mesh != Mc3dsNothing && !Mc3dsHasTracks(node);
        roots[i] = node.parent == Mc3dsNothing ? i : roots[node.parent];
        (*moving)[i] = !stays && (Moves(node) || (node.parent != Mc3dsNothing && (*moving)[node.parent]));
        const bool isObject = node.mesh != Mc3dsNothing || node.dummy != Mc3dsNothing;
        if ((*moving)[i] && isObject)
            isLive[roots[i]] = true;
    }
    std::vector<Actor> actors;
    for (size_t i = 0; i < keyframer.nodes.size(); ++i) {
        const Mc3dsNode &node = keyframer.nodes[i];
        if (node.isLost || !isLive[roots[i]])
            continue;
        if (node.mesh != Mc3dsNothing && keyframer.meshes[node.mesh].node == i)
            actors.push_back({i, Quoted(node.name),
                              Mc3dsToNode(node, Mc3dsDeterminant(Mc3dsMeshMatrix(
                                                    *keyframer.meshes[node.mesh].mesh)) < 0)});
        else if (node.dummy != Mc3dsNothing)
            actors.push_back({i, Quoted("Dummy" + std::to_string(node.dummy)), Mc3dsToNode(node, false)});
    }
    return actors;
}

std::string Mc3dsRestoreMotion(Mc3dsRestoring *restoring)
{
    constexpr uint64_t lineLeast = 30;
    Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    for (Mc3dsNode &node : keyframer.nodes)
        for (Mc3dsTrack *track : {&node.positions, &node.turns, &node.scales})
            Mc3dsBendTrack(track);
    std::vector<bool> moving;
    const std::vector<Actor> actors = FindActors(keyframer, &moving);
    std::string text;
    const uint64_t frames = keyframer.frameCount + uint64_t{1};
    const auto dummies = static_cast<uint64_t>(
        std::count_if(keyframer.nodes.begin(), keyframer.nodes.end(),
                      [](const Mc3dsNode &node) { return node.dummy != Mc3dsNothing; }));
    bool fits = frames * actors.size() * lineLeast <= restoring->room &&
                frames * (keyframer.meshes.size() + dummies) <= placementsMost;
    for (uint64_t frame = 0; fits && !actors.empty() && frame <= keyframer.frameCount; ++frame) {
        const std::vector<Mc3dsMatrix> placements = Mc3dsPlacementsAt(keyframer, static_cast<double>(frame));
        text += "frame " + std::to_string(frame) + '\n';
        for (const Actor &actor : actors)
            AppendTransform(&text, actor.name, Mc3dsProduct(actor.before, placements[actor.node]));
        fits = text.size() <= restoring->room;
    }
    for (const Actor &actor : actors)
        if (const Mc3dsNode &node = keyframer.nodes[actor.node];
            moving[actor.node] && node.mesh != Mc3dsNothing)
            Mc3dsRecord(restoring, kind, node.name, fits ? keyframer.frameCount : 0,
                        fits ? Mc3dsRestoreLimit::None : Mc3dsRestoreLimit::TooLarge);
    return fits ? text : "";
}
