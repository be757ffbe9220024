"""One recipe over many photographs: deaths and restarts change nothing in the manifest."""

import errno
import hashlib
import json
import os
import pathlib
import signal
import stat
import subprocess
import sys

import pytest

from roxe.batch.__main__ import find_photographs, identity_of, masks_of, run
from roxe.batch.folder import Folder, Refusal
from roxe.batch.task import process, without_paths
from pictures import noise

RECIPE = "# a test\nvariations --red 3\n"


def write_photographs(folder, count, broken=()):
    """000.ppm, 001.ppm, ... of noise, some below a subfolder; broken ones hold text."""
    for i in range(count):
        path = folder / ("more" if i % 10 == 9 else "") / f"{i:03}.ppm"
        path.parent.mkdir(parents=True, exist_ok=True)
        pixels = noise(16, 24, seed=i)
        path.write_bytes(b"not a picture" if i in broken else b"P6 24 16 255\n" + pixels.tobytes())


def wrapped_tool(folder, script):
    """A tool that runs a shell script first: $2 is the recipe, $3 the photograph."""
    path = folder / "tool"
    path.write_text(f'#!/bin/sh\n(cd "{folder}"\n{script}\n)\n'
                    f'exec "{os.environ["ROXE_TOOL"]}" "$@"\n')
    path.chmod(path.stat().st_mode | stat.S_IXUSR)
    return path


def start(folder, out, *options, **popen):
    return subprocess.Popen(
        [sys.executable, "-m", "roxe.batch", "recipe.txt", "in", "--out", out, *map(str, options)],
        cwd=folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **popen)


def batch(folder, out, *options):
    """Exit code, standard output and standard error of a whole run."""
    process = start(folder, out, *options)
    output, errors = process.communicate(timeout=600)
    return process.returncode, output, errors


def lines(out):
    return [json.loads(line) for line in (out / "manifest.jsonl").read_text().splitlines()]


def test_deaths_and_restarts_change_nothing(tmp_path):
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 100, broken=[42])

    code, output, errors = batch(tmp_path, "undisturbed", "--jobs", 1)
    assert code == 1
    assert output.startswith("99 of 100 photographs done (0 before) in ")
    assert output.endswith(", written to undisturbed; 1 failed\n")
    sentence = "is not a JPEG, PNG, TIFF, WebP, PPM or PGM picture"
    assert f"roxe.batch: 042.ppm: {sentence}\n" in errors
    assert "100 of 100 photographs, 1 failed, 0 done before, 0:00 left\n" in errors

    expected = lines(tmp_path / "undisturbed")
    names = [entry["input"] for entry in expected]
    assert len(names) == 100 and names == sorted(names) and "more/099.ppm" in names
    for entry in expected:
        source = (tmp_path / "in" / entry["input"]).read_bytes()
        assert entry["input_sha256"] == hashlib.sha256(source).hexdigest()
        assert entry["recipe_sha256"] == hashlib.sha256(RECIPE.encode()).hexdigest()
        if entry["input"] == "042.ppm":
            assert entry["error"] == sentence and "output" not in entry
        else:
            made = (tmp_path / "undisturbed" / entry["output"]).read_bytes()
            assert entry["output_sha256"] == hashlib.sha256(made).hexdigest()

    # The worker dies in the fourth task, the driver at the sixtieth photograph, each once.
    tool = wrapped_tool(tmp_path, """
        echo "$3" >> log
        case "$3" in
        */003.ppm) mkdir worker-died 2>/dev/null && kill -9 $PPID ;;
        */060.ppm) while [ ! -e driver ]; do sleep 0.01; done
                   mkdir driver-died 2>/dev/null && kill -9 $(cat driver) ;;
        esac""")
    driver = start(tmp_path, "disturbed", "--jobs", 2, "--tool", tool)
    (tmp_path / "pid").write_text(str(driver.pid))
    (tmp_path / "pid").rename(tmp_path / "driver")
    driver.communicate(timeout=600)
    assert driver.returncode == -signal.SIGKILL
    disturbed = tmp_path / "disturbed"
    assert (tmp_path / "worker-died").exists() and not (disturbed / "manifest.jsonl").exists()
    journal = disturbed / ".roxe-batch/journal.jsonl"
    before = [line for line in journal.read_text().splitlines() if line]
    # The sixtieth is the 55th of the sorted names, and at most 16 are under way.
    assert 38 <= len(before) < 100
    assert list((disturbed / ".roxe-batch").glob("run-*"))  # what the dead left
    with open(journal, "a") as file:
        file.write('{"input": "torn')

    (tmp_path / "log").unlink()
    code, output, _ = batch(tmp_path, "disturbed", "--jobs", 2, "--tool", tool)
    assert code == 1
    done_before = sum("error" not in json.loads(line) for line in before)
    assert output.startswith(f"99 of 100 photographs done ({done_before} before) in ")
    assert (disturbed / "manifest.jsonl").read_bytes() == (
        tmp_path / "undisturbed/manifest.jsonl").read_bytes()
    assert sorted(os.listdir(disturbed)) == sorted(os.listdir(tmp_path / "undisturbed"))
    done_again = {pathlib.Path(line).name for line in (tmp_path / "log").read_text().split()}
    assert not done_again & {pathlib.Path(json.loads(line)["input"]).name for line in before
                             if "error" not in line}


def test_a_photograph_that_kills_every_worker_becomes_a_line(tmp_path):
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 8)
    tool = wrapped_tool(tmp_path, 'case "$3" in */002.ppm) kill -9 $PPID ;; esac')
    code, output, errors = batch(tmp_path, "out", "--jobs", 2, "--tool", tool)
    assert code == 1 and output.startswith("7 of 8 photographs done")
    assert "roxe.batch: 002.ppm: every worker died that was given this photograph\n" in errors
    entries = lines(tmp_path / "out")
    assert [entry["input"] for entry in entries if "error" in entry] == ["002.ppm"]
    assert not (tmp_path / "out/.roxe-batch").exists()


def test_workers_of_a_named_scheduler_need_no_package(tmp_path):
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 5)
    bare = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"}
    address = tmp_path / "scheduler.json"
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "env": bare,
             "cwd": tmp_path}
    scheduler = subprocess.Popen(
        [sys.executable, "-m", "distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port",
         "0", "--no-dashboard", "--scheduler-file", address], **quiet)
    worker = None
    try:
        while not address.exists() or not address.read_text().endswith("}"):
            assert scheduler.poll() is None
        worker = subprocess.Popen(
            [sys.executable, "-m", "distributed.cli.dask_worker", "--scheduler-file", address,
             "--nthreads", "1", "--no-dashboard"], **quiet)
        name = json.loads(address.read_text())["address"]
        code, output, _ = batch(tmp_path, "out", "--scheduler", name)
        assert code == 0 and output.startswith("5 of 5 photographs done")
    finally:
        for process in (worker, scheduler):
            if process:
                process.terminate()
                process.wait(timeout=300)


# ---- without a cluster


@pytest.fixture
def job(tmp_path):
    for name in ("in", "out", "working/scratch", "working/made"):
        (tmp_path / name).mkdir(parents=True)
    write_photographs(tmp_path / "in", 2, broken=[1])
    (tmp_path / "recipe.txt").write_text(RECIPE)
    return {"tool": os.environ["ROXE_TOOL"], "source": str(tmp_path / "in"),
            "target": str(tmp_path / "out"), "scratch": str(tmp_path / "working/scratch"),
            "recipe": str(tmp_path / "recipe.txt"), "arguments": [], "extension": "",
            "identity": {"recipe_sha256": hashlib.sha256(RECIPE.encode()).hexdigest()}}


def test_what_stands_in_the_manifest_is_not_done_again(job, tmp_path):
    made = process(job, "000.ppm", None)
    path = tmp_path / "out/000.ppm"
    stamp = path.stat().st_mtime_ns
    assert process(job, "000.ppm", made) is made and path.stat().st_mtime_ns == stamp

    other = {**job, "identity": {**job["identity"], "options": ["--strip"]}}
    assert process(other, "000.ppm", made)["options"] == ["--strip"]
    other = {**job, "identity": {"recipe_sha256": "another"}}
    assert process(other, "000.ppm", made)["error"] == "the recipe was changed while the batch ran"
    path.unlink()
    assert process(job, "000.ppm", made) == made and path.exists()
    (tmp_path / "in/000.ppm").write_bytes(b"P6 1 1 255\n123")
    assert process(job, "000.ppm", made)["input_sha256"] != made["input_sha256"]
    assert os.listdir(tmp_path / "working/scratch") == []


def test_failures_hold_no_paths_of_a_machine(job, tmp_path):
    failed = process(job, "001.ppm", None)
    assert failed["error"] == "is not a JPEG, PNG, TIFF, WebP, PPM or PGM picture"
    assert str(tmp_path) not in json.dumps(failed)
    tool = wrapped_tool(tmp_path, "kill -11 $$")
    crashed = process({**job, "tool": str(tool)}, "000.ppm", None)
    assert crashed["error"] == "the tool was ended by signal 11"
    assert without_paths("/a/b/c.jpg: cannot (see '/x/y/z.txt') 1/2 in /a/b/d/e", ["/a/b"]) == (
        "c.jpg: cannot (see 'z.txt') 1/2 in d/e")


def test_a_swept_task_puts_nothing_in_place(job, tmp_path):
    tool = wrapped_tool(tmp_path, 'rm -rf working/scratch')

    with pytest.raises(OSError):
        process({**job, "tool": str(tool)}, "000.ppm", None)
    assert os.listdir(tmp_path / "out") == []


def test_masks_belong_to_the_recipe():
    assert masks_of("soft-focus --radius 3 --mask 'a b.png'\n# --mask no\n"
                    "soft-focus --radius 3 --mask=c.png --mask-radius 2\ntint --mask-only\n") == (
        ["a b.png", "c.png"])


def test_masks_are_found_as_the_tool_finds_them():
    assert masks_of("soft-focus --radius 3 --mask a.png # don't blur\n"
                    "soft-focus --radius 3 --mask b\\1.png\r\n"
                    "tint --colour #C8501E --mask-only\n"
                    "# soft-focus --mask c.png\n") == ["a.png", "b\\1.png"]


def test_masks_of_one_name_in_two_folders_both_count(tmp_path):
    for folder in ("a", "b"):
        (tmp_path / folder).mkdir()
        (tmp_path / folder / "mask.png").write_bytes(folder.encode())
    recipe = "soft-focus --radius 3 --mask a/mask.png\nsoft-focus --radius 3 --mask b/mask.png\n"
    before = identity_of(recipe, str(tmp_path), [])
    (tmp_path / "a/mask.png").write_bytes(b"another")
    other = identity_of(recipe, str(tmp_path), [])
    (tmp_path / "b/mask.png").write_bytes(b"another")
    assert before != other != identity_of(recipe, str(tmp_path), [])


def test_the_photographs_are_those_of_the_tool(tmp_path):
    for name in ("a.JPG", "b.png", "c.tif", "d.TIFF", "e.webp", "f.pnm", "g.txt", ".h.jpg"):
        (tmp_path / name).write_bytes(b"")
    os.mkfifo(tmp_path / "pipe.jpg")  # opening it would wait for ever
    os.symlink("nowhere", tmp_path / "z.jpg")  # a failure worth a line
    assert find_photographs(str(tmp_path), str(tmp_path / "out")) == ([
        "a.JPG", "b.png", "c.tif", "d.TIFF", "e.webp", "f.pnm", "z.jpg"], {})


@pytest.mark.filterwarnings("ignore:make_current")  # of tornado, where the driver is called in this process
def test_folders_that_cannot_be_read(tmp_path, monkeypatch, capsys):
    """Every disk has one; the rest is done, and what was made of it before stays known."""
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 20)
    monkeypatch.chdir(tmp_path)
    command = ["recipe.txt", "in", "--out", "out", "--jobs", "1"]
    assert run(command) == 0
    before = (tmp_path / "out/manifest.jsonl").read_bytes()
    scandir = os.scandir

    def closed(path):  # for the administrator as well, who may read everything
        if str(path).endswith(("/more", "/closed")):
            raise PermissionError(errno.EACCES, os.strerror(errno.EACCES), path)
        return scandir(path)

    monkeypatch.setattr(os, "scandir", closed)
    capsys.readouterr()
    assert run(command) == 1
    said = capsys.readouterr()
    assert said.out.startswith("18 of 18 photographs done (18 before) in ")
    assert said.out.endswith(", written to out; 1 folder could not be read\n")
    assert said.err.endswith("roxe.batch: more: the folder cannot be read (Permission denied)\n")
    assert (tmp_path / "out/manifest.jsonl").read_bytes() == before
    (tmp_path / "in").rename(tmp_path / "closed")
    with pytest.raises(Refusal, match="^closed: the folder cannot be read .Permission denied.$"):
        run(["recipe.txt", "closed", "--out", "out"])


def test_what_no_batch_has_made_is_kept(job, tmp_path):
    made = process(job, "000.ppm", None)
    content = (tmp_path / "out/000.ppm").read_bytes()
    # A run that ended before it noted its result makes the same again.
    assert process(job, "000.ppm", None) == made
    (tmp_path / "out/000.ppm").write_bytes(b"precious")
    refused = process(job, "000.ppm", None)
    assert refused["error"] == "000.ppm exists already, and no batch has made it"
    assert process(job, "000.ppm", refused) == refused
    assert (tmp_path / "out/000.ppm").read_bytes() == b"precious"
    assert process(job, "000.ppm", {**made, "output": "000.png"})["error"] == refused["error"]


def test_what_was_changed_since_is_kept(job, tmp_path):
    made = process(job, "000.ppm", None)
    path = tmp_path / "out/000.ppm"
    content = path.read_bytes()
    path.write_bytes(b"retouched")
    refused = process(job, "000.ppm", made)
    assert refused["error"] == (
        "000.ppm was changed since the batch made it: delete it to have it made again")
    assert process(job, "000.ppm", refused) == refused
    assert path.read_bytes() == b"retouched"
    path.unlink()
    assert process(job, "000.ppm", refused) == made and path.read_bytes() == content


def other_job(job, tmp_path, recipe):
    (tmp_path / "other.txt").write_text(recipe)
    return {**job, "recipe": str(tmp_path / "other.txt"),
            "identity": {"recipe_sha256": hashlib.sha256(recipe.encode()).hexdigest()}}


def test_what_other_recipes_and_formats_made_stays_the_batch_s_own(job, tmp_path):
    made = process(job, "000.ppm", None)
    left = {"000.ppm": made["output_sha256"]}
    # A recipe that fails leaves it as it was, and knows of it.
    failed = process(other_job(job, tmp_path, "perspective --corners 0,0,900,0,900,700,0,900"), "000.ppm", made)
    assert "outside" in failed["error"] and failed["left"] == left
    assert process(job, "000.ppm", failed) == made
    png = {**job, "arguments": ["--format=png"], "extension": ".png"}
    converted = process(png, "000.ppm", failed)
    assert converted["output"] == "000.png" and converted["left"] == left
    assert process(png, "000.ppm", converted) is converted
    bright = process(other_job(job, tmp_path, "shadow-highlight --shadow 40"), "000.ppm", converted)
    assert bright["output"] == "000.ppm" and bright["left"] == {"000.png": converted["output_sha256"]}
    assert bright["output_sha256"] != made["output_sha256"]
    (tmp_path / "out/000.png").write_bytes(b"retouched")
    assert process(png, "000.ppm", bright)["error"].startswith("000.png was changed since")


def test_a_failure_does_not_make_the_batch_the_owner_of_what_stands_there(job, tmp_path):
    (tmp_path / "out/000.ppm").write_bytes(b"my own work")
    failed = process(other_job(job, tmp_path, "perspective --corners 0,0,900,0,900,700,0,900"), "000.ppm", None)
    assert "outside" in failed["error"]
    kept = process(job, "000.ppm", failed)
    assert kept["error"] == "000.ppm exists already, and no batch has made it"
    assert (tmp_path / "out/000.ppm").read_bytes() == b"my own work"


def test_a_result_that_no_line_speaks_of_is_replaced_all_the_same(job, tmp_path):
    """As where the driver died before it noted it, and the recipe was changed then."""
    first = process(job, "000.ppm", None)
    second = process(other_job(job, tmp_path, "shadow-highlight --shadow 40"), "000.ppm", None)
    assert second["output_sha256"] != first["output_sha256"]


def command(*arguments):
    return [str(argument) for argument in ("recipe.txt", "in", "--out", "out", "--jobs", 1, *arguments)]


IN_THIS_PROCESS = pytest.mark.filterwarnings("ignore:make_current")  # of tornado


@IN_THIS_PROCESS
def test_photographs_that_are_gone_keep_their_lines(tmp_path, monkeypatch, capsys):
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 2)
    write_photographs(tmp_path / "work", 1)
    content = (tmp_path / "in/000.ppm").read_bytes()
    (tmp_path / "work/000.ppm").write_bytes(content[:-1] + bytes([content[-1] ^ 255]))
    monkeypatch.chdir(tmp_path)
    assert run(command()) == 0
    assert run(["recipe.txt", "work", "--out", "out", "--jobs", "1"]) == 0
    assert "1 of 1 photographs done (0 before, 1 replaced) in" in capsys.readouterr().out
    assert [entry["input"] for entry in lines(tmp_path / "out")] == ["000.ppm", "001.ppm"]
    (tmp_path / "out/001.ppm").unlink()
    assert run(["recipe.txt", "work", "--out", "out", "--jobs", "1"]) == 0
    assert "1 of 1 photographs done (1 before) in" in capsys.readouterr().out
    assert [entry["input"] for entry in lines(tmp_path / "out")] == ["000.ppm"]


@pytest.mark.parametrize("content", [
    b'{"my": "own"}\n', b"a text\n", b"\xff\xfe\n", b'{"input": "a.jpg", "error": 7}\n', b"[]\n",
    b'{"input": "a.jpg", "output": "a.jpg"}\n', b'{"input": "a.jpg", "error": "x", "left": 3}\n'])
def test_a_manifest_of_somebody_else_is_kept(tmp_path, monkeypatch, content):
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 1)
    (tmp_path / "out").mkdir()
    (tmp_path / "out/manifest.jsonl").write_bytes(content)
    monkeypatch.chdir(tmp_path)
    with pytest.raises(Refusal, match="out/manifest.jsonl: is not the manifest of a batch"):
        run(command())
    assert os.listdir(tmp_path / "out") == ["manifest.jsonl"]
    assert (tmp_path / "out/manifest.jsonl").read_bytes() == content


@IN_THIS_PROCESS
def test_recipes_are_those_of_the_tool(tmp_path, monkeypatch):
    """Their bytes, with lines that end as on Windows, and their folder, not that of a link's end."""
    write_photographs(tmp_path / "in", 1)
    for folder, brightness in (("project", 255), ("shelf", 0)):
        (tmp_path / folder).mkdir()
        (tmp_path / folder / "m.pgm").write_bytes(b"P5 24 16 255\n" + bytes([brightness]) * 384)
    (tmp_path / "shelf/recipe.txt").write_bytes(b"soft-focus --radius 9 --mask m.pgm\r\n")
    (tmp_path / "project/recipe.txt").symlink_to("../shelf/recipe.txt")
    monkeypatch.chdir(tmp_path)
    assert run(["project/recipe.txt", "in", "--out", "out", "--jobs", "1"]) == 0
    subprocess.run([os.environ["ROXE_TOOL"], "run", "project/recipe.txt", "in", "--out", "wanted"], check=True)
    assert (tmp_path / "out/000.ppm").read_bytes() == (tmp_path / "wanted/000.ppm").read_bytes()
    masks = lines(tmp_path / "out")[0]["masks_sha256"]
    assert masks == {"m.pgm": hashlib.sha256((tmp_path / "project/m.pgm").read_bytes()).hexdigest()}


def test_a_link_in_the_folder_of_results_does_not_lead_to_the_originals(job, tmp_path):
    (tmp_path / "in/more").mkdir()
    (tmp_path / "in/000.ppm").rename(tmp_path / "in/more/000.ppm")
    (tmp_path / "out").mkdir(exist_ok=True)
    (tmp_path / "out/more").symlink_to("../in/more")
    before = (tmp_path / "in/more/000.ppm").read_bytes()
    assert process(job, "more/000.ppm", None)["error"] == "more/000.ppm: a link leads out of the folder"
    assert (tmp_path / "in/more/000.ppm").read_bytes() == before


def test_a_folder_that_cannot_be_made(tmp_path):
    (tmp_path / "file").write_bytes(b"")
    with pytest.raises(Refusal, match="file: the folder cannot be made or written .Not a directory."):
        Folder(str(tmp_path / "file"))
    (tmp_path / "out/.roxe-batch/lock").mkdir(parents=True)  # for the administrator, who may write all
    with pytest.raises(Refusal, match="out: the folder cannot be made or written .Is a directory."):
        Folder(str(tmp_path / "out"))


def test_a_folder_where_a_run_died(tmp_path):
    folder = Folder(str(tmp_path))
    with folder.journal():
        pass
    (tmp_path / ".roxe-batch/made/digest").touch()
    folder.close()
    Folder(str(tmp_path)).close()
    assert (tmp_path / ".roxe-batch/made/digest").exists()


@pytest.mark.parametrize("arguments, sentence", [
    (["recipe.txt", "in", "--out", ""], "--out needs a name, not ''"),
    (["recipe.txt", "nowhere", "--out", "out"], "nowhere: is not a folder"),
    (["recipe.txt", "empty", "--out", "out"], "empty: holds no photograph"),
    (["none.txt", "in", "--out", "out"], "none.txt: cannot be read (No such file or directory)"),
    (["bad.txt", "in", "--out", "out"], "bad.txt, line 1: there is no operation 'sharpen'"),
    (["recipe.txt", "in", "--out", "in"], "in: results there could replace the photographs"),
    (["recipe.txt", "in", "--out", "."], ".: results there could replace the photographs"),
    (["recipe.txt", "in", "--out", "out", "--jobs", "0"], "--jobs needs a whole number from 1"),
    (["recipe.txt", "in", "--out", "out", "--quality", "101"], "--quality needs a whole number"),
    (["recipe.txt", "in", "--out", "out", "--sharpness", "3"],
     "this argument was not expected: --sharpness"),
    (["recipe.txt", "in", "in2", "--out", "out"], "this argument was not expected: in2"),
    (["recipe.txt", "in", "--out", "out", "--strip", "in2"], "--strip takes no value"),
    (["recipe.txt", "in", "--out", "out", "--overwrite"], "--overwrite has no place here"),
    (["recipe.txt", "in", "--out", "out", "--format", "gif"], "--format"),
    (["recipe.txt", "in", "--out", "out", "--tool", "nothing"],
     "the tool nothing cannot be run (No such file or directory): give --tool PATH"),
    (["recipe.txt", "in", "--out", "out", "--tool", "true"], "true is not the tool"),
    (["recipe.txt", "twins", "--out", "out", "--format", "png"],
     "000.pgm and 000.ppm would both become 000.png"),
])
def test_commands_without_sense(tmp_path, monkeypatch, arguments, sentence):
    monkeypatch.chdir(tmp_path)
    monkeypatch.setenv("ROXE_TOOL", os.environ["ROXE_TOOL"])
    (tmp_path / "recipe.txt").write_text(RECIPE)
    (tmp_path / "bad.txt").write_text("sharpen\n")
    (tmp_path / "empty").mkdir()
    write_photographs(tmp_path / "in", 1)
    write_photographs(tmp_path / "twins", 1)
    (tmp_path / "twins/000.pgm").write_bytes(b"")
    with pytest.raises(Refusal) as refusal:
        run(arguments)
    assert str(refusal.value).startswith(sentence)
    assert not (tmp_path / "out").exists()


def test_options_of_the_tool_go_to_the_tool_and_into_the_manifest(job, tmp_path):
    plain = process(job, "000.ppm", None)
    path = tmp_path / "in/000.ppm"
    other = {**job, "arguments": ["--format", "png"], "extension": ".png",
             "identity": {**job["identity"], "options": ["--format", "png"]}}
    entry = process(other, "000.ppm", plain)
    assert entry["output"] == "000.png" and entry["options"] == ["--format", "png"]
    assert (tmp_path / "out/000.png").read_bytes().startswith(b"\x89PNG") and path.exists()


def test_names_of_any_bytes(tmp_path):
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 1)
    names = [b"bad\xff.ppm", b"new\nline.ppm", b"-x.ppm"]
    for name in names:
        os.link(tmp_path / "in/000.ppm", os.path.join(os.fsencode(tmp_path), b"in", name))
    (tmp_path / "in" / os.fsdecode(b"broken\x1b[2J\xfe.ppm")).write_bytes(b"")
    code, output, errors = batch(tmp_path, os.fsdecode(b"o\xff"), "--jobs", 1)
    assert code == 1 and "4 of 5 photographs done" in output and "written to o?; 1 failed" in output
    assert "roxe.batch: broken?[2J?.ppm: the file is empty" in errors and "Traceback" not in errors
    results = os.path.join(os.fsencode(tmp_path), b"o\xff")
    made = {open(os.path.join(results, name), "rb").read() for name in (*names, b"000.ppm")}
    assert len(made) == 1
    code, output, errors = batch(tmp_path, os.fsdecode(b"o\xff"), "--jobs", 1)
    assert "4 of 5 photographs done (4 before)" in output


def test_an_address_that_is_none(tmp_path):
    (tmp_path / "recipe.txt").write_text(RECIPE)
    write_photographs(tmp_path / "in", 1)
    assert batch(tmp_path, "out", "--scheduler", "nonsense") == (
        2, "", "roxe.batch: no scheduler answers at nonsense\n")


def test_one_batch_at_a_time(tmp_path, monkeypatch):
    first = Folder(str(tmp_path))
    with pytest.raises(Refusal, match="another batch is writing to"):
        Folder(str(tmp_path))
    first.close()
    second = Folder(str(tmp_path))
    assert second.known() == {}
    second.close()
