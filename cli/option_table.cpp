#include "cli/option_table.h"

#include "cli/commands.h"
#include "ground/pieces.h"

namespace marrowfen::cli {

namespace {

constexpr const char* kModels = ".scene.json .gltf .glb .vrm .fbx .dae .zae .obj .stl .ply .off .3ds .cob .blend .bvh";
constexpr const char* kShapeFiles = ".dts .dsq";
constexpr const char* kSections =
    "counts bounds nodes objects decals IFLmaterials subshapes nodeDefRotations nodeDefTranslations nodeTranslations "
    "nodeRotations nodeScalesUniform nodeScalesAligned nodeScalesArbitrarys nodeScaleRotsArbitrary groundTranslations "
    "groundRotations objectStates decalStates triggers detailLevels meshes names sequences materials";
constexpr double kMostTriangles = 1e8;

constexpr OptionRow flag(const char* name, const char* help, char letter = '\0') {
    return {name, letter, Takes::Nothing, "", "", 0, 0, help};
}
constexpr OptionRow text(const char* name, const char* value, const char* help) {
    return {name, '\0', Takes::Text, value, "", 0, 0, help};
}
constexpr OptionRow file(const char* name, const char* value, const char* endings, const char* help) {
    return {name, '\0', Takes::File, value, endings, 0, 0, help};
}
constexpr OptionRow folder(const char* name, const char* help) {
    return {name, '\0', Takes::Folder, "DIR", "", 0, 0, help};
}
constexpr OptionRow number(const char* name, const char* value, double least, double most, const char* help) {
    return {name, '\0', Takes::Number, value, "", least, most, help};
}
constexpr OptionRow count(const char* name, double least, double most, const char* help) {
    return {name, '\0', Takes::Count, "N", "", least, most, help};
}
constexpr OptionRow word(const char* name, const char* value, const char* words, const char* help) {
    return {name, '\0', Takes::Word, value, words, 0, 0, help};
}
constexpr OptionRow withLetter(OptionRow row, char letter) {
    row.letter = letter;
    return row;
}

OptionGroup modelOptions() {
    return {kModelGroup,
            {number("--fps", "RATE", 1, 1000, "frames a second to sample animations at (the file's own, or 30)"),
             number("--scale", "FACTOR", 1e-6, 1e6, "factor on a model's size"),
             word("--unit", "UNIT", "mm cm m in", "what the model counts in, whatever its file says"),
             word("--up", "AXIS", "x y z", "the model's upright axis, whatever its format says"),
             number("--turn", "DEGREES", -360, 360, "turn the model to the left"),
             text("--layer", "LAYER=PATTERN",
                  "nodes called like the pattern become that layer; the first match counts; may be given again"),
             text("--loop", "PATTERN", "a pattern for the names of animations that loop; may be given again"),
             text("--levels", "LIST",
                  "levels of detail, such as 64,32:50%,16:25%: sizes in pixels and parts of the triangles"),
             count("--max-triangles", 4, kMostTriangles, "at most so many in each level of detail"),
             file("--for", "SHAPE", ".dts", "the shape that the animations are for: its nodes' names are taken"),
             flag("--single-sided", "leave out the backs of double-sided faces"),
             flag("--textures", "write a plain texture for materials that have a colour only"),
             flag("--no-textures", "write no textures beside the output"),
             count("--max-seconds", 1, 1e6,
                   "of processor time for reading the model (30, of small files less), and twice as many by the clock"),
             count("--max-memory", 64, 1e6, "megabytes for reading the model (4096, of small files less)")}};
}

const PlaceRow kScene = {"SCENE", Takes::File, kModels, "a *.scene.json file, or a model (glTF, FBX, OBJ, ...)"};
const PlaceRow kShape = {"FILE", Takes::File, kShapeFiles, "DTS file of version 19 to 24, or DSQ file of version 24"};

VerbRow exportVerb() {
    return {
        "export",
        "SCENE OUTPUT [OPTIONS]\nSCENE... --out-dir DIR [OPTIONS]",
        "make a DTS or DSQ file of a scene",
        {"marrowfen export ship.glb ship.dts --with-animation",
         "marrowfen export models/*.fbx --out-dir shapes -j 4 --if-changed"},
        {{"SCENE", Takes::File,
          ".scene.json .gltf .glb .vrm .fbx .dae .zae .obj .stl .ply .off .3ds .cob .blend "
          ".bvh .dts .dsq",
          "*.scene.json files or models (glTF, FBX, OBJ, ...), or @LIST, a file with one of them a line; without "
          "--out-dir one, and behind it the output: its name ends in .dts (shape) or .dsq (sequences only), and "
          "its log is OUTPUT.log",
          true}},
        {{kMadeGroup,
          {flag("--with-animation", "put the animations into the .dts file"),
           flag("--strict", "exit with 5 when there were warnings; the files are written all the same")}},
         {"Many scenes",
          {folder("--out-dir", "where the outputs go, under the scenes' names"),
           folder("--root", "keep the folders below this one"),
           word("--format", "FORMAT", "dts dsq", "what they become (dts)"),
           withLetter(count("--jobs", 1, 1024,
                            "scenes at a time, besides those that wait for the disk (one more than processors)"),
                      'j'),
           number("--timeout", "SECONDS", 0.01, 1e6, "give a scene up after so long (600)")}},
         {"Build systems",
          {file("--depfile", "FILE", ".d", "write a rule in Make's syntax: the outputs and all that was looked for"),
           flag("--if-changed",
                "do nothing when output, log and depfile are newer than what they were made of, and the options "
                "are the same; remembered in OUTPUT.made"),
           file("--report", "FILE", ".json", "write what happened as JSON; - is standard output"),
           flag("--dry-run", "do everything but leave files"),
           flag("--watch", "export again whenever something of it changes, until Ctrl-C")}},
         modelOptions()},
        runExport};
}

std::vector<VerbRow> sceneVerbs() {
    return {
        exportVerb(),
        {"explain",
         "SCENE [OPTIONS]",
         "tell how each layer, node and clip of a scene is read; makes nothing of it",
         {"marrowfen explain ship.scene.json", "marrowfen explain ship.glb --layer 'collision:box=*_col'"},
         {kScene},
         {modelOptions()},
         runExplain},
        {"import",
         "MODEL OUTPUT [OPTIONS]",
         "write a model as a scene file, to look at or to change",
         {"marrowfen import ship.glb ship.scene.json", "marrowfen import ship.fbx - --unit cm | less"},
         {{"MODEL", Takes::File, kModels, "glTF, FBX, OBJ, Collada, Blender, ... (see marrowfen formats)"},
          {"OUTPUT", Takes::File, ".scene.json", "the scene file (.scene.json); - is standard output"}},
         {modelOptions()},
         runImport},
        {"add-node",
         "SCENE NAME [-o FILE]",
         "add a named node to a scene file, as the panel does",
         {"marrowfen add-node ship.scene.json mount0", "marrowfen add-node ship.scene.json eye -o with-eye.scene.json"},
         {{"SCENE", Takes::File, ".scene.json", "a *.scene.json file"},
          {"NAME", Takes::Text, "", "the node's name, at most 63 bytes"}},
         {{"Options",
           {withLetter(file("--output", "FILE", ".scene.json", "scene file to write; SCENE itself when left out"),
                       'o')}}},
         runAddNode}};
}

std::vector<VerbRow> shapeVerbs() {
    return {{"inspect",
             "FILE... [OPTIONS]",
             "tell what is in DTS and DSQ files, and what is wrong with them",
             {"marrowfen inspect ship.dts", "marrowfen inspect shapes/*.dts --check --ignore LEVEL_NEVER_SHOWS"},
             {{"FILE", Takes::File, kShapeFiles, kShape.help, true}},
             {{"Options",
               {flag("--json", "print a line for each file, with one JSON object"),
                flag("--check", "print the findings only, a line each, and exit with 1 when one is an error"),
                text("--ignore", "CODE", "leave out findings of this code; may be given again"),
                flag("--strict", "exit with 5 when there is any finding")}}},
             runInspect},
            {"dump",
             "FILE [--only SECTION]",
             "print every table of a DTS or DSQ file as text",
             {"marrowfen dump ship.dts", "marrowfen dump ship.dts --only sequences"},
             {kShape},
             {{"Options", {word("--only", "SECTION", kSections, "this table alone")}}},
             runDump},
            {"diff",
             "A B",
             "tell what differs between two DTS or DSQ files; exits with 1 when something does",
             {"marrowfen diff old/ship.dts ship.dts", "marrowfen diff walk.dsq walk-new.dsq"},
             {{"A", Takes::File, kShapeFiles, "the old one"}, {"B", Takes::File, kShapeFiles, "the new one"}},
             {},
             runDiff},
            {"view",
             "FILE OUTPUT [--sequences FILE]",
             "turn a DTS file into something to look at",
             {"marrowfen view ship.dts ship.html", "marrowfen view crew.dts crew.glb --sequences walk.dsq"},
             {{"FILE", Takes::File, ".dts", "a .dts file"},
              {"OUTPUT", Takes::File, ".glb .html", "a .glb model, or an .html page that shows it"}},
             {{"Options",
               {file("--sequences", "FILE", ".dsq",
                     "play this .dsq file on the shape's nodes of the same names; may be given again")}}},
             runView}};
}

std::vector<VerbRow> otherVerbs() {
    return {
        {"formats",
         "",
         "tell what can be read, and how well it is tried",
         {"marrowfen formats", "marrowfen formats | grep -i fbx"},
         {},
         {},
         runFormats},
        {"completion",
         "SHELL",
         "print the completions for a shell",
         {"marrowfen completion bash > ~/.local/share/bash-completion/completions/marrowfen",
          "marrowfen completion fish > ~/.config/fish/completions/marrowfen.fish"},
         {{"SHELL", Takes::Word, "bash zsh fish", "bash, zsh or fish"}},
         {},
         runCompletion},
        {"man",
         "[PAGE]",
         "print a manual page, for man -l -",
         {"marrowfen man | man -l -", "marrowfen man names | man -l -"},
         {{"PAGE", Takes::Word, "command names", "command, the one of all verbs and options, or names", false, true}},
         {},
         runMan}};
}

}  // namespace

const std::vector<VerbRow>& verbTable() {
    static const std::vector<VerbRow> table = [] {
        std::vector<VerbRow> all = sceneVerbs();
        for (const auto& part : {shapeVerbs(), otherVerbs()}) all.insert(all.end(), part.begin(), part.end());
        return all;
    }();
    return table;
}

const std::vector<OptionRow>& globalOptions() {
    static const std::vector<OptionRow> table = [] {
        OptionRow verbose = flag("--verbose", "details on standard error; twice, the export log as well", 'v');
        verbose.isMoreEachTime = true;
        return std::vector<OptionRow>{flag("--quiet", "only errors on standard error", 'q'), verbose,
                                      word("--color", "WHEN", "auto always never", "colour (auto: on a terminal)"),
                                      flag("--help", "print this help", 'h'),
                                      flag("--version", "print the version", 'V')};
    }();
    return table;
}

const std::vector<ExitRow>& exitTable() {
    static const std::vector<ExitRow> table = {
        {Done, "done"},
        {Refused, "the exporter refused the scene; diff found differences; inspect --check found an error"},
        {WrongUsage, "wrong usage"},
        {UnreadableInput, "the input can't be read or is malformed"},
        {UnwritableOutput, "the output can't be written"},
        {StrictWarnings, "warnings, or findings of inspect, under --strict"},
        {OurFault, "no memory, or a fault of the program"}};
    return table;
}

std::vector<std::string> choicesOf(const char* choices) { return piecesOf(choices, ' '); }

}  // namespace marrowfen::cli
