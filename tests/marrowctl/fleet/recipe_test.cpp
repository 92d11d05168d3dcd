#include "marrowctl/fleet/recipe.h"

#include <gtest/gtest.h>

#include <string>

namespace marrowbench::ctl {
namespace {

RecipeOptions optionsFor(std::vector<std::string> hosts) {
  RecipeOptions options;
  options.hosts = std::move(hosts);
  options.folder = {"/srv/control", "run1"};
  options.image = "registry/bench:1";
  return options;
}

std::vector<std::string> manyHosts(int count) {
  std::vector<std::string> hosts;
  for (int i = 1; i <= count; ++i) hosts.push_back("c" + std::to_string(i));
  return hosts;
}

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(EngineNamed, KnowsItsOwnNames) {
  EXPECT_EQ(engineNames().size(), 8U);
  for (std::size_t i = 0; i < engineNames().size(); ++i)
    EXPECT_EQ(engineNamed(engineNames()[i]), static_cast<Engine>(i));
  EXPECT_FALSE(engineNamed("Clush"));
}

TEST(MakeRecipe, StatesItsFanOut) {
  const struct {
    Engine engine;
    const char* few;
    const char* many;
  } cases[] = {{Engine::clush, "-f 3 ", "-f 64 "},
               {Engine::pdsh, "-f 3 ", "-f 64 "},
               {Engine::ssh, "-P 3 ", "-P 64 "},
               {Engine::parallel, "-j0 ", "-j0 "},
               {Engine::ansible, "-f 3 ", "-f 64 "},
               {Engine::srun, "--ntasks=3 ", "--ntasks=500 "},
               {Engine::sbatch, "--ntasks=3 ", "--ntasks=500 "}};
  for (const auto& c : cases) {
    EXPECT_TRUE(holds(makeRecipe(c.engine, optionsFor(manyHosts(3))).text, c.few)) << c.few;
    EXPECT_TRUE(holds(makeRecipe(c.engine, optionsFor(manyHosts(500))).text, c.many)) << c.many;
  }
}

TEST(MakeRecipe, DetachesWhereAShellStarts) {
  for (const std::string_view name : engineNames()) {
    const Engine engine = *engineNamed(name);
    const bool keepsItsOwn =
        engine == Engine::srun || engine == Engine::sbatch || engine == Engine::kubernetes;
    const std::string text = makeRecipe(engine, optionsFor({"c1", "c2"})).text;
    // The fan-out's comment names the option where it explains it.
    EXPECT_EQ(holds(text.substr(text.find("fleet")), "--detach"), !keepsItsOwn) << name;
  }
}

TEST(MakeRecipe, RefusesHostsThatNoEngineTakes) {
  const struct {
    std::vector<std::string> hosts;
    const char* problem;
  } cases[] = {{{"c1", "c 2"}, "c 2 is no name of a host"},
               {{"-c1"}, "-c1 is no name of a host"},
               {{"@all"}, "@all is no name of a host"},
               {{"user@c1"}, "user@c1 is no name of a host"},
               {{"c1", "c2", "c1"}, "c1 is named twice"},
               {{"c1.east", "c1.west"}, "c1.east and c1.west would both be the client c1"}};
  for (const auto& c : cases) {
    const Recipe recipe = makeRecipe(Engine::ssh, optionsFor(c.hosts));
    EXPECT_EQ(recipe.text, "");
    EXPECT_TRUE(recipe.problem.starts_with(c.problem)) << recipe.problem;
  }
}

TEST(MakeRecipe, RefusesPathsThatItCannotHold) {
  RecipeOptions options = optionsFor({"c1"});
  options.folder.control = "/srv/a\nb";
  for (const std::string_view name : engineNames()) {
    EXPECT_TRUE(holds(makeRecipe(*engineNamed(name), options).problem, "control character"))
        << name;
  }
  options.folder.control = "/srv/\xff";
  EXPECT_EQ(makeRecipe(Engine::pdsh, options).problem, "");
  EXPECT_TRUE(holds(makeRecipe(Engine::ansible, options).problem, "no UTF-8"));
  EXPECT_TRUE(holds(makeRecipe(Engine::kubernetes, options).problem, "no UTF-8"));
  options.folder.control = "/srv/{x}";
  EXPECT_EQ(makeRecipe(Engine::pdsh, options).problem, "");
  EXPECT_TRUE(holds(makeRecipe(Engine::parallel, options).problem, "has a \"{\""));
}

TEST(MakeRecipe, RefusesWhatCannotBeAPod) {
  const struct {
    const char* host;
    bool isPod;
  } hosts[] = {{"c1", true},   {"node-1.cluster.local", true},
               {"C1", false},  {"c_1", false},
               {"c1-", false}, {"localhost", false}};
  for (const auto& c : hosts) {
    const Recipe recipe = makeRecipe(Engine::kubernetes, optionsFor({c.host}));
    EXPECT_EQ(recipe.problem.empty(), c.isPod) << c.host;
  }
  EXPECT_EQ(makeRecipe(Engine::kubernetes, optionsFor({std::string(51, 'c')})).problem, "");
  EXPECT_NE(makeRecipe(Engine::kubernetes, optionsFor({std::string(52, 'c')})).problem, "");
  RecipeOptions options = optionsFor({"c1"});
  options.image.clear();
  EXPECT_TRUE(holds(makeRecipe(Engine::kubernetes, options).problem, "--image"));
  options = optionsFor({"c1"});
  options.mount = "/srv/con";
  EXPECT_TRUE(holds(makeRecipe(Engine::kubernetes, options).problem, "does not lie in /srv/con"));
}

TEST(MakeRecipe, TakesAMountHoweverItEnds) {
  const struct {
    const char* control;
    const char* mount;
  } cases[] = {{"/srv/control", "/srv"},
               {"/srv/control", "/srv/"},
               {"/srv/control", "/srv//"},
               {"/srv/control/", "/srv/control"},
               {"/srv", "/srv/"},
               {"/srv/control", "/"},
               {"/", "/"},
               {"/srv", "//"}};
  for (const auto& c : cases) {
    RecipeOptions options = optionsFor({"c1"});
    options.folder.control = c.control;
    options.mount = c.mount;
    EXPECT_EQ(makeRecipe(Engine::kubernetes, options).problem, "") << c.control << " " << c.mount;
  }
  RecipeOptions options = optionsFor({"c1"});
  options.mount = "/srv/con/";
  EXPECT_TRUE(holds(makeRecipe(Engine::kubernetes, options).problem, "does not lie in /srv/con/"));
}

TEST(CommandFor, CarriesARecipeOut) {
  using Words = std::vector<std::string>;
  EXPECT_EQ(commandFor(Engine::clush, "a b", 3), (Words{"sh", "a b"}));
  EXPECT_EQ(commandFor(Engine::srun, "f", 3), (Words{"sh", "f"}));
  EXPECT_EQ(commandFor(Engine::sbatch, "f", 3), (Words{"sbatch", "f"}));
  EXPECT_EQ(commandFor(Engine::ansible, "f", 500), (Words{"ansible-playbook", "-f", "64", "f"}));
  EXPECT_EQ(commandFor(Engine::kubernetes, "f", 3), (Words{"kubectl", "create", "-f", "f"}));
}

}  // namespace
}  // namespace marrowbench::ctl
