#include "scene/Scene.h"

namespace tavlo::scene {

RefPtr<Scene> Scene::createWithSize(Director& director, Size size)
{
    RefPtr<Scene> scene = makeRef<Scene>(director);
    scene->setContentSize(size);
    return scene;
}

} // namespace tavlo::scene
