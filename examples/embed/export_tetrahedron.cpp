// Builds a scene in C++ and exports it with the plug-in, as the command does with scenes from files.
#include <headless/host.h>
#include <headless/host_paths.h>
#include <headless/module_loader.h>
#include <headless/scene_data.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>

namespace {

headless::SceneData MakeTetrahedron() {
  headless::MeshData mesh;
  mesh.points = std::vector<float>{1, 1, 1, -1, -1, 1, -1, 1, -1, 1, -1, -1};
  mesh.polygonStarts = std::vector<std::uint32_t>{0, 3, 6, 9, 12};
  mesh.polygonPoints = std::vector<std::uint32_t>{0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
  mesh.material.texts = {"Default"};
  mesh.material.perPolygon = std::vector<std::uint32_t>{0, 0, 0, 0};

  headless::SceneData scene = headless::MakeScene();
  const headless::ItemIndex item = headless::AddItem(scene, "mesh", "Tetrahedron");
  scene.items[static_cast<std::size_t>(item)].mesh = std::make_shared<const headless::MeshData>(std::move(mesh));
  scene.userValues["sceneio.gltf.save.exportType"] = 0;  // all items; the savers' own default is the selection
  return scene;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: export_tetrahedron OUTPUT.glb\n");
    return 2;
  }
  try {
    headless::Host host(MakeTetrahedron());
    host.SetLogSink([](const headless::LogLine& line) { std::fprintf(stderr, "%s\n", line.text.c_str()); });
    const headless::LoadedModule module(VORNEL_MODULE, host);
    const auto saver = module.NewSaver("gltf.bin");
    const std::string file = headless::ToHostPath(std::filesystem::absolute(argv[1]).string());
    return ZySucceeded(saver.Raw()->Save(host.Scene(), file.c_str(), nullptr)) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
