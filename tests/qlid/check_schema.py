"""Holds JSON documents against a schema: check_schema.py SCHEMA DOCUMENT... Ends with 1 and says what is
wrong, or with 77 where there is no python3-jsonschema."""
import json
import sys

try:
    from jsonschema import Draft202012Validator
except ImportError:
    sys.exit(77)

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
Draft202012Validator.check_schema(schema)
wrong = 0
for path in sys.argv[2:]:
    with open(path, encoding="utf-8") as file:
        document = json.load(file)
    for error in Draft202012Validator(schema).iter_errors(document):
        print(f"{path}: {error.json_path}: {error.message}")
        wrong = 1
sys.exit(wrong)
