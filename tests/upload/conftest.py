import pytest
from harness.drag import pointer
from stage import Stage


@pytest.fixture(scope="module")
def shared_stage(programs, module_output):
    stage = Stage(programs, module_output)
    yield stage
    stage.processes.end()


@pytest.fixture
def stage(shared_stage, has_failed, request):
    yield shared_stage
    if has_failed():
        pointer("mouseup", 1)
        shared_stage.desktop.screenshot(shared_stage.folder / f"{request.node.name}.png")
        if shared_stage.companion:
            print(shared_stage.companion.window.describe())
        shared_stage.end_programs()
    shared_stage.end_sources()
