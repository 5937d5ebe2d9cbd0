"""Writes a tiny qwen2-architecture GGUF model with random weights and a real
tokenizer, for tests that need a running llama-server.

The tokenizer (Qwen2 byte-level BPE: tokens, types, merges, pre-tokenizer name,
special token ids) is copied from the vocabulary file that ships in the
llama.cpp source tree, and the file is written with that tree's own gguf-py.
The model's replies are gibberish, but under a JSON schema the server's
grammar sampler keeps them schema-valid, which is what the tests need; an
output bias towards JSON punctuation makes such replies close in a few dozen
tokens, greedy or sampled, instead of running into max_tokens.

    make_test_model.py [OUTPUT] [--source DIR] [--seed N] [--force] [--pooling mean]

OUTPUT defaults to $XDG_CACHE_HOME/nuvrel/test-models/tiny-qwen2.gguf, and with
--pooling to tiny-qwen2-embedding.gguf there: a model that declares mean
pooling, so that a server in embedding mode gives one vector per input. An
existing file written by this tool with the same revision is kept as it is.
Runs under Debian's /usr/bin/python3 with python3-numpy.
"""

from __future__ import annotations

import argparse
import os
import struct
import sys
import tempfile
from pathlib import Path

LLAMA_SERVER_VERSION = "3.22.1"
VOCAB_FILE = "models/ggml-vocab-qwen2.gguf"
MODEL_NAME = "nuvrel-tiny-qwen2-random"
# Raise when the written model changes, so that old files are rewritten.
REVISION = 3
REVISION_KEY = "nuvrel.test_model.revision"

# Small, but a real qwen2 graph: grouped heads off, biases on q/k/v, tied output matrix.
N_LAYER = 2
N_EMBD = 64
N_HEAD = 4
N_HEAD_KV = 4
N_FF = 128
N_CTX = 4096
ROPE_FREQ_BASE = 1_000_000.0
RMS_EPS = 1e-6
WEIGHT_STD = 0.02

# Output bias. A random model with tied embeddings mostly repeats its last token:
# under a JSON schema with greedy decoding that means runs of blank tokens or
# digits until max_tokens, and cut-off JSON. Favouring the tokens made of JSON
# punctuation and disfavouring blank ones lets replies close within a few dozen
# tokens; which enum value or number comes out stays random. Tokens with a
# quote rank highest, so that free strings close instead of filling with
# punctuation.
QUOTE_BIAS = 16.0
PUNCTUATION_BIAS = 10.0
BLANK_BIAS = -10.0
JSON_PUNCTUATION = frozenset(b'{}[],:"')
BLANKS = frozenset(b" \t\n\r")
NORMAL_TOKEN = 1

CHATML_TEMPLATE = (
    "{%- for message in messages -%}"
    "{{- '<|im_start|>' + message['role'] + '\\n' + message['content'] + '<|im_end|>\\n' -}}"
    "{%- endfor -%}"
    "{%- if add_generation_prompt -%}"
    "{{- '<|im_start|>assistant\\n' -}}"
    "{%- endif -%}"
)


def cache_home() -> Path:
    xdg = os.environ.get("XDG_CACHE_HOME")
    if xdg:
        return Path(xdg)
    home = os.environ.get("HOME")
    if not home:
        sys.exit("make_test_model: error: neither XDG_CACHE_HOME nor HOME is set")
    return Path(home) / ".cache"


def default_source() -> Path:
    return cache_home() / "nuvrel" / "llama-server" / LLAMA_SERVER_VERSION / "src"


def default_output() -> Path:
    return cache_home() / "nuvrel" / "test-models" / "tiny-qwen2.gguf"


def import_gguf(source: Path):
    gguf_py = source / "gguf-py"
    if not (gguf_py / "gguf" / "__init__.py").is_file():
        sys.exit(
            f"make_test_model: error: no gguf-py in {source}; "
            "run scripts/install-llama-server.sh first, or pass --source"
        )
    sys.path.insert(0, str(gguf_py))
    try:
        import numpy  # noqa: F401
    except ImportError:
        sys.exit("make_test_model: error: numpy is missing (Debian: apt-get install python3-numpy)")
    import gguf

    return gguf


# GGUF metadata value types (gguf-py's GGUFValueType numbers) and their packing.
_SCALAR = {0: "B", 1: "b", 2: "H", 3: "h", 4: "I", 5: "i", 6: "f", 7: "?", 10: "Q", 11: "q", 12: "d"}
_STRING = 8
_ARRAY = 9


class _Metadata:
    """Reads the metadata of a GGUF file with struct: gguf-py's GGUFReader
    makes a NumPy view per string and needs about a minute for a 150k-token
    vocabulary, this needs a fraction of a second."""

    def __init__(self, data: bytes):
        self.data = data
        self.pos = 0

    def take(self, fmt: str):
        values = struct.unpack_from(fmt, self.data, self.pos)
        self.pos += struct.calcsize(fmt)
        return values[0] if len(values) == 1 else values

    def string(self) -> bytes:
        length = self.take("<Q")
        value = self.data[self.pos:self.pos + length]
        self.pos += length
        return value

    def value(self, kind: int):
        if kind == _STRING:
            return self.string()
        if kind in _SCALAR:
            return self.take("<" + _SCALAR[kind])
        raise ValueError(f"unexpected GGUF value type {kind}")

    def entries(self):
        """Yields (key, value, type, element type) for every metadata entry."""
        if self.data[:4] != b"GGUF":
            raise ValueError("not a GGUF file")
        self.pos = 4
        version, _n_tensors, n_kv = self.take("<IQQ")
        if version < 2:
            raise ValueError(f"GGUF version {version} is too old")
        for _ in range(n_kv):
            key = self.string().decode("utf-8")
            kind = self.take("<I")
            if kind == _ARRAY:
                sub, count = self.take("<IQ")
                if sub == _STRING:
                    items = [self.string() for _ in range(count)]
                elif sub in _SCALAR:
                    fmt = "<" + _SCALAR[sub] * count
                    items = list(struct.unpack_from(fmt, self.data, self.pos))
                    self.pos += struct.calcsize(fmt)
                else:
                    raise ValueError(f"unexpected GGUF array element type {sub}")
                yield key, items, kind, sub
            else:
                yield key, self.value(kind), kind, None


def existing_revision(path: Path) -> int | None:
    """The revision stamp of a model this tool wrote. The stamp is among the
    first entries, so only the file's head is read."""
    try:
        with open(path, "rb") as f:
            head = f.read(4096)
        for key, value, kind, _ in _Metadata(head).entries():
            if key == REVISION_KEY:
                return int(value)
            if kind == _ARRAY:
                return None
    except (OSError, ValueError, struct.error, UnicodeDecodeError):
        return None
    return None


def tokenizer_metadata(vocab_path: Path) -> list[tuple[str, object, int, int | None]]:
    entries = list(_Metadata(vocab_path.read_bytes()).entries())
    return [e for e in entries if e[0].startswith("tokenizer.") and e[0] != "tokenizer.chat_template"]


def byte_decoder() -> dict[str, int]:
    """The inverse of the byte-level BPE alphabet (bytes shown as printable characters)."""
    printable = list(range(ord("!"), ord("~") + 1)) + list(range(ord("¡"), ord("¬") + 1)) + list(range(ord("®"), ord("ÿ") + 1))
    chars = printable[:]
    extra = 0
    for b in range(256):
        if b not in printable:
            printable.append(b)
            chars.append(256 + extra)
            extra += 1
    return {chr(c): b for b, c in zip(printable, chars)}


def output_bias(tokens: list[bytes], types: list[int]):
    import numpy as np

    decode = byte_decoder()
    bias = np.zeros(len(tokens), dtype=np.float32)
    for i, (token, kind) in enumerate(zip(tokens, types)):
        if kind != NORMAL_TOKEN:
            continue
        text = token.decode("utf-8", "replace")
        if not text or any(ch not in decode for ch in text):
            continue
        raw = bytes(decode[ch] for ch in text)
        if all(b in JSON_PUNCTUATION for b in raw):
            bias[i] = QUOTE_BIAS if ord('"') in raw else PUNCTUATION_BIAS
        elif all(b in BLANKS for b in raw):
            bias[i] = BLANK_BIAS
    return bias


def write_model(gguf, vocab_path: Path, output: Path, seed: int, pooling: str | None) -> None:
    import numpy as np

    tokenizer = tokenizer_metadata(vocab_path)
    values = {key: value for key, value, _, _ in tokenizer}
    if values.get("tokenizer.ggml.model") != b"gpt2" or "tokenizer.ggml.merges" not in values:
        sys.exit(f"make_test_model: error: {vocab_path} is not a byte-level BPE vocabulary with merges")
    n_vocab = len(values["tokenizer.ggml.tokens"])

    arch = "qwen2"
    writer = gguf.GGUFWriter(str(output), arch)
    writer.add_name(MODEL_NAME)
    writer.add_uint32(REVISION_KEY, REVISION)
    writer.add_context_length(N_CTX)
    writer.add_embedding_length(N_EMBD)
    writer.add_block_count(N_LAYER)
    writer.add_feed_forward_length(N_FF)
    writer.add_head_count(N_HEAD)
    writer.add_head_count_kv(N_HEAD_KV)
    writer.add_rope_freq_base(ROPE_FREQ_BASE)
    writer.add_layer_norm_rms_eps(RMS_EPS)
    writer.add_file_type(gguf.LlamaFileType.MOSTLY_Q4_0)
    writer.add_quantization_version(gguf.GGML_QUANT_VERSION)

    for key, value, kind, sub in tokenizer:
        writer.add_key_value(key, value, gguf.GGUFValueType(kind), None if sub is None else gguf.GGUFValueType(sub))
    writer.add_chat_template(CHATML_TEMPLATE)
    if pooling == "mean":
        writer.add_pooling_type(gguf.PoolingType.MEAN)

    rng = np.random.default_rng(seed)

    def normal(*shape: int) -> np.ndarray:
        return (rng.standard_normal(shape, dtype=np.float32) * WEIGHT_STD).astype(np.float32)

    def ones(n: int) -> np.ndarray:
        return np.ones(n, dtype=np.float32)

    # The embedding (also the output matrix) is nearly all of the file: Q4_0 keeps it at a few MB.
    embedding = gguf.quants.quantize(normal(n_vocab, N_EMBD), gguf.GGMLQuantizationType.Q4_0)
    writer.add_tensor("token_embd.weight", embedding, raw_dtype=gguf.GGMLQuantizationType.Q4_0)
    writer.add_tensor("output_norm.weight", ones(N_EMBD))
    writer.add_tensor("output.bias", output_bias(values["tokenizer.ggml.tokens"], values["tokenizer.ggml.token_type"]))
    n_embd_kv = N_EMBD // N_HEAD * N_HEAD_KV
    for i in range(N_LAYER):
        blk = f"blk.{i}"
        writer.add_tensor(f"{blk}.attn_norm.weight", ones(N_EMBD))
        writer.add_tensor(f"{blk}.attn_q.weight", normal(N_EMBD, N_EMBD))
        writer.add_tensor(f"{blk}.attn_q.bias", normal(N_EMBD))
        writer.add_tensor(f"{blk}.attn_k.weight", normal(n_embd_kv, N_EMBD))
        writer.add_tensor(f"{blk}.attn_k.bias", normal(n_embd_kv))
        writer.add_tensor(f"{blk}.attn_v.weight", normal(n_embd_kv, N_EMBD))
        writer.add_tensor(f"{blk}.attn_v.bias", normal(n_embd_kv))
        writer.add_tensor(f"{blk}.attn_output.weight", normal(N_EMBD, N_EMBD))
        writer.add_tensor(f"{blk}.ffn_norm.weight", ones(N_EMBD))
        writer.add_tensor(f"{blk}.ffn_gate.weight", normal(N_FF, N_EMBD))
        writer.add_tensor(f"{blk}.ffn_up.weight", normal(N_FF, N_EMBD))
        writer.add_tensor(f"{blk}.ffn_down.weight", normal(N_EMBD, N_FF))

    writer.write_header_to_file()
    writer.write_kv_data_to_file()
    writer.write_tensors_to_file()
    writer.close()


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("output", nargs="?", type=Path, default=None, help="where to write the model")
    parser.add_argument("--source", type=Path, default=None, help="the llama.cpp source tree (gguf-py and models/)")
    parser.add_argument("--seed", type=int, default=0, help="seed of the random weights")
    parser.add_argument("--force", action="store_true", help="write even when an up-to-date file is there")
    parser.add_argument("--pooling", choices=["mean"], default=None, help="declare a pooling type, for embedding mode")
    args = parser.parse_args()

    default = default_output()
    if args.pooling:
        default = default.with_name("tiny-qwen2-embedding.gguf")
    output: Path = (args.output or default).absolute()
    source: Path = args.source or default_source()
    if not args.force and output.is_file() and existing_revision(output) == REVISION:
        print(output)
        return 0

    gguf = import_gguf(source)

    vocab_path = source / VOCAB_FILE
    if not vocab_path.is_file():
        sys.exit(f"make_test_model: error: no {VOCAB_FILE} in {source}")

    output.parent.mkdir(parents=True, exist_ok=True)
    fd, part = tempfile.mkstemp(prefix=output.name + ".", suffix=".part", dir=output.parent)
    os.close(fd)
    try:
        write_model(gguf, vocab_path, Path(part), args.seed, args.pooling)
        os.chmod(part, 0o644)
        os.replace(part, output)
    except BaseException:
        Path(part).unlink(missing_ok=True)
        raise
    print(f"make_test_model: wrote {output} ({output.stat().st_size / 1e6:.1f} MB)", file=sys.stderr)
    print(output)
    return 0


if __name__ == "__main__":
    sys.exit(main())
