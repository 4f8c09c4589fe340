#include "script.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

Matrix Times(const Matrix &a, const Matrix &b)
{
    Matrix out = {};
    for (size_t i = 0; i < 16; ++i)
        for (size_t k = 0; k < 4; ++k)
            out[i] += a[i / 4 * 4 + k] * b[k * 4 + i % 4];
    return out;
}

Point Place(const Point &p, const double *m)
{
    Point out;
    for (size_t i = 0; i < 3; ++i)
        out[i] = p[0] * m[i] + p[1] * m[4 + i] + p[2] * m[8 + i] + m[12 + i];
    return out;
}

double Distance(const std::vector<Point> &a, const std::vector<Point> &b)
{
    double most = a.size() == b.size() ? 0 : INFINITY;
    for (size_t i = 0; i < a.size() && most < INFINITY; ++i)
        for (size_t axis = 0; axis < 3; ++axis) {
            const double distance = std::abs(a[i][axis] - b[i][axis]);
            most = distance < 1e9 ? std::max(most, distance) : INFINITY;
        }
    return most;
}

std::vector<std::vector<std::string>> Statements(const std::string &text)
{
    std::vector<std::vector<std::string>> all;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::vector<std::string> statement;
        for (std::string word; words >> word;)
            statement.push_back(word);
        if (!statement.empty())
            all.push_back(statement);
    }
    return all;
}

// An open clump or prototype. A Transform replaces the previous one of its scope.
struct Scope {
    std::string name;
    Matrix world;                   // of the scope itself
    std::vector<Matrix> placements; // saved in it; the last one counts
    std::vector<Point> vertices, corners;
};

std::vector<Point> SolidCorners(const std::string &script)
{
    std::vector<Scope> scopes = {{"", identity, {identity}, {}, {}}};
    std::map<std::string, std::vector<Point>> prototypes;
    std::vector<Point> all;
    bool isSolid = true;
    for (const std::vector<std::string> &words : Statements(script)) {
        const auto number = [&](size_t i) { return std::stod(words.at(i)); };
        const std::string &word = words[0], name = words.size() == 2 ? words[1] : "";
        Scope &scope = scopes.back();
        const Matrix world = Times(scope.placements.back(), scope.world);
        if (word == "TransformBegin") {
            scope.placements.push_back(Matrix(scope.placements.back()));
        } else if (word == "TransformEnd") {
            scope.placements.pop_back();
        } else if (word == "Transform") {
            for (size_t i = 0; i < 16; ++i)
                scope.placements.back()[i] = number(i + 1);
        } else if (word == "ClumpBegin" || word == "ProtoBegin") {
            scopes.push_back({name, word == "ClumpBegin" ? world : identity, {identity}, {}, {}});
        } else if (word == "ClumpEnd" || word == "ProtoEnd") {
            std::vector<Point> &to = word == "ClumpEnd" ? all : prototypes[scope.name];
            to.insert(to.end(), scope.corners.begin(), scope.corners.end());
            scopes.pop_back();
        } else if (word == "ProtoInstance") {
            for (const Point &corner : prototypes[name])
                all.push_back(Place(corner, world.data()));
        } else if (word == "Vertex" || word == "VertexExt") {
            scope.vertices.push_back(Place({number(1), number(2), number(3)}, world.data()));
        } else if (word == "GeometrySampling") {
            isSolid = name == "SOLID";
        } else if (word == "Triangle" && isSolid) {
            for (const size_t i : {1u, 2u, 3u})
                scope.corners.push_back(scope.vertices.at(std::stoul(words.at(i)) - 1));
        }
    }
    return all;
}

std::vector<FrameLines> ReadFrames(const std::string &text)
{
    std::vector<FrameLines> frames;
    for (const std::vector<std::string> &words : Statements(text)) {
        if (words[0] == "Frame") {
            frames.emplace_back();
            continue;
        }
        Matrix matrix = identity;
        for (size_t i = 0; i < 12; ++i)
            matrix[i / 3 * 4 + i % 3] = std::stod(words.at(i + 2));
        frames.back().emplace_back(std::stoul(words[1]), matrix);
    }
    return frames;
}
