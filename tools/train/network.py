"""The reader of digit rows: a small convolutional network with connectionist temporal classification.

Convolutions and CTC as in Shi et al., "An End-to-End Trainable Neural Network for Image-based Sequence Recognition"
(2015), without its recurrent layers. Input: rows of grey pixels, batch x 1 x 32 x width, each row with mean 0 and
deviation 1. Output: batch x width/4 x 11 probabilities, class 0 the blank and class d + 1 the digit d.
"""

import numpy as np
import onnx
import tensorflow as tf

HEIGHT, STEP, CLASSES = 32, 4, 11
# Of each layer: channels, kernel, strides, padding. Rows shrink to height 1, widths to a quarter.
LAYERS = ((16, (3, 3), (2, 2), "same"), (32, (3, 3), (1, 1), "same"), (32, (3, 3), (2, 2), "same"),
          (48, (3, 3), (1, 1), "same"), (64, (3, 3), (2, 1), "same"), (64, (3, 3), (1, 1), "same"),
          (96, (4, 1), (1, 1), "valid"), (96, (1, 5), (1, 1), "same"), (96, (1, 5), (1, 1), "same"))


def build():
    """A fresh network; its output are logits, batch x height 1 x steps x classes."""
    inputs = tf.keras.Input((HEIGHT, None, 1))
    x = inputs
    for channels, kernel, strides, padding in LAYERS:
        if padding == "same":  # padded as ONNX pads, not as TensorFlow does: the same on both sides
            x = tf.keras.layers.ZeroPadding2D((kernel[0] // 2, kernel[1] // 2))(x)
        x = tf.keras.layers.Conv2D(channels, kernel, strides, use_bias=False)(x)
        x = tf.keras.layers.ReLU()(tf.keras.layers.BatchNormalization(momentum=0.98)(x))
    return tf.keras.Model(inputs, tf.keras.layers.Conv2D(CLASSES, (1, 1))(x))


def trainer(network, steps, peak_rate=2e-3):
    """A function that makes one training step on rows, labels (blank 0, padded with 0) and their lengths."""
    rate = tf.keras.optimizers.schedules.CosineDecay(0.0, steps - steps // 20, warmup_target=peak_rate,
                                                     warmup_steps=steps // 20)
    optimizer = tf.keras.optimizers.AdamW(rate, weight_decay=1e-3)

    @tf.function(reduce_retracing=True)
    def step(rows, labels, lengths):
        with tf.GradientTape() as tape:
            logits = network(rows, training=True)[:, 0]
            times = tf.fill([tf.shape(logits)[0]], tf.shape(logits)[1])
            loss = tf.reduce_mean(tf.nn.ctc_loss(labels, tf.transpose(logits, [1, 0, 2]), lengths, times,
                                                 blank_index=0))
        gradients = tape.gradient(loss, network.trainable_variables)
        optimizer.apply_gradients(zip(tf.clip_by_global_norm(gradients, 5.0)[0], network.trainable_variables))
        return loss

    return step


def decode(logits):
    """The digits of each row by greedy decoding; `logits`: batch x steps x classes."""
    texts = []
    for row in logits.argmax(axis=2):
        kept = [label for before, label in zip([0, *row], row) if label and label != before]
        texts.append("".join(str(label - 1) for label in kept))
    return texts


def to_onnx(network):
    """The network as an ONNX model: batch normalisation folded into the convolutions, a softmax behind them."""
    make = onnx.helper
    nodes, weights, name = [], [], "rows"
    folded = list(_folded(network))
    for index, (kernel, bias) in enumerate(folded):
        last = index == len(folded) - 1
        _, _, strides, padding = LAYERS[index] if not last else (CLASSES, (1, 1), (1, 1), "valid")
        rows, columns = kernel.shape[2:]
        pads = [rows // 2, columns // 2] * 2 if padding == "same" else [0] * 4
        weights += [onnx.numpy_helper.from_array(kernel, f"kernel{index}"),
                    onnx.numpy_helper.from_array(bias, f"bias{index}")]
        nodes.append(make.make_node("Conv", [name, f"kernel{index}", f"bias{index}"], [f"conv{index}"],
                                    strides=list(strides), pads=pads))
        name = f"conv{index}"
        if not last:
            nodes.append(make.make_node("Relu", [name], [f"relu{index}"]))
            name = f"relu{index}"
    weights.append(onnx.numpy_helper.from_array(np.array([2], np.int64), "height"))
    nodes += [make.make_node("Squeeze", [name, "height"], ["flat"]),
              make.make_node("Transpose", ["flat"], ["logits"], perm=[0, 2, 1]),
              make.make_node("Softmax", ["logits"], ["probabilities"], axis=2)]
    real = onnx.TensorProto.FLOAT
    graph = make.make_graph(nodes, "digit-rows",
                            [make.make_tensor_value_info("rows", real, ["batch", 1, HEIGHT, "width"])],
                            [make.make_tensor_value_info("probabilities", real, ["batch", "steps", CLASSES])], weights)
    model = make.make_model(graph, opset_imports=[make.make_opsetid("", 13)], ir_version=8)
    onnx.checker.check_model(model)
    return model


def _folded(network):
    """Kernels (out x in x rows x columns) and biases, batch normalisation worked into them."""
    kernel = None
    for layer in network.layers:
        if isinstance(layer, tf.keras.layers.Conv2D):
            kernel = layer.get_weights()[0].transpose(3, 2, 0, 1)
            if layer.use_bias:
                yield np.ascontiguousarray(kernel), layer.get_weights()[1]
        elif isinstance(layer, tf.keras.layers.BatchNormalization):
            gamma, beta, mean, variance = layer.get_weights()
            factor = gamma / np.sqrt(variance + layer.epsilon)
            yield np.ascontiguousarray(kernel * factor[:, None, None, None]), beta - mean * factor
