"""python3 -m roxe.batch: one recipe over a folder of photographs, on one machine or on many.

Each photograph is a task for Dask; each task runs the command-line tool. What was made stands in
OUT/manifest.jsonl: one line a photograph, sorted, and the same bytes whatever the number of workers
and whatever died on the way. What stands there with the hashes of its input, recipe and output is
not done again.
"""
