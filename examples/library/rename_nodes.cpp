// Gives the nodes of a shape a prefix: rename-nodes PREFIX IN.dts OUT.dts

#include <fstream>
#include <iostream>

#include "shape/shape.h"
#include "shape/shape_check.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: rename-nodes PREFIX IN.dts OUT.dts\n";
        return 2;
    }
    std::ifstream in(argv[2], std::ios::binary);
    marrowfen::Shape shape;
    shape.readDts(in);
    if (shape.hasError() || marrowfen::anyBroken(marrowfen::findProblems(shape))) {
        std::cerr << argv[2] << ": " << (shape.hasError() ? shape.error() : "its links don't hold") << "\n";
        return 3;
    }
    for (marrowfen::Shape::Node& node : shape.nodes) {
        const std::string name = argv[1] + shape.names[static_cast<size_t>(node.name)];
        node.name = shape.findOrAddName(name);
    }
    std::ofstream out(argv[3], std::ios::binary);
    shape.writeDts(out, true);
    return out.flush() ? 0 : 4;
}
