// Sizes and places that the geometric operations need before the library draws. Every function
// gives what the command-line tool computes, so that all doors draw the same bytes.

/** The angle nearest to zero that turns as far, -180 ... 180 degrees, without rounding. Of two
 * numbers of turns equally near to the angle the even one is taken off. */
export function remainder(angle) {
  const rest = angle % 360;
  if (Math.abs(rest) === 180) return (angle - rest) / 360 % 2 === 0 ? rest : -rest;
  return rest > 180 ? rest - 360 : rest < -180 ? rest + 360 : rest;
}

/** The smallest canvas that holds every corner of a turned picture, and where its centre lies. */
export function expanded(width, height, centre, radians) {
  const cos = Math.cos(radians), sin = Math.sin(radians);
  const xs = [0], ys = [0];
  for (const x of [-centre[0], width - 1 - centre[0]])
    for (const y of [-centre[1], height - 1 - centre[1]]) {
      xs.push(x * cos - y * sin);
      ys.push(x * sin + y * cos);
    }
  const hair = 1e-6;  // of rounding, which must not cost a whole column
  const floor = (v) => Math.floor(Math.min(...v) + hair);
  const ceil = (v) => Math.ceil(Math.max(...v) - hair);
  return {
    width: ceil(xs) - floor(xs) + 1,
    height: ceil(ys) - floor(ys) + 1,
    centre: [-floor(xs), -floor(ys)],
  };
}

/** The angle in radians by which straightening turns: the line becomes level or upright. */
export function straighteningAngle([x1, y1, x2, y2]) {
  const dx = x2 - x1, dy = y2 - y1;
  return Math.atan(Math.abs(dy) > Math.abs(dx) ? dx / dy : -dy / dx);
}

/** The size of the largest upright part without background, about the centre; null: there is none.
 * A size fits if the source positions of its corners lie inside the picture; half a pixel pays for
 * the fixed-point steps of the library. */
export function cropped(width, height, radians, free, repeats) {
  const cos = Math.cos(radians), sin = Math.sin(radians);
  const centreX = width >> 1, centreY = height >> 1;
  const low = repeats ? 0.5 : 1.5;
  const right = repeats ? width - 1 : width - 2, bottom = repeats ? height - 1 : height - 2;
  const inside = (x, y) => {
    const sourceX = centreX + cos * x + sin * y, sourceY = centreY + cos * y - sin * x;
    return sourceX >= low && sourceX <= right && sourceY >= low && sourceY <= bottom;
  };
  const fits = (w, h) => {
    const left = -(w >> 1), top = -(h >> 1);
    const last = w - 1 + left, end = h - 1 + top;
    return inside(left, top) && inside(last, top) && inside(left, end) && inside(last, end);
  };
  if (!free) {
    for (let w = width; w > 0; --w) {
      const h = Math.max(1, Math.floor(w * height / width + 0.5));
      if (fits(w, h)) return [w, h];
    }
    return null;
  }
  let best = null;
  const most = Math.ceil(Math.hypot(width, height));
  for (let w = 1; w <= most; ++w) {
    let h = 0;
    for (let above = most + 1; above - h > 1;) {
      const middle = (h + above) >> 1;
      if (fits(w, middle)) h = middle; else above = middle;
    }
    if (h > 0 && (!best || w * h >= best[0] * best[1])) best = [w, h];
  }
  return best;
}

const cross = (a, b, c) => (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);

function isConvex(points) {
  const turns = points.filter((_, i) => cross(points[i], points[(i + 1) % 4], points[(i + 2) % 4]) > 0);
  return turns.length === 0 || turns.length === 4;
}

/** Four corners in an order around their outline: the given one, or with anyOrder the one that does
 * not cross itself. Throws a RangeError with a sentence where there is none. */
export function outline(corners, what, anyOrder) {
  const points = [0, 1, 2, 3].map((i) => [corners[2 * i], corners[2 * i + 1]]);
  const named = (i) => `${i + 1} (${points[i].join(', ')})`;
  for (let i = 0; i < 4; ++i)
    if (points[i].some((v) => Math.abs(v) > 1e9))
      throw new RangeError(`${what}: corner ${named(i)} lies far outside any picture`);
  for (let i = 0; i < 4; ++i)
    for (let j = i + 1; j < 4; ++j)
      if (points[i][0] === points[j][0] && points[i][1] === points[j][1])
        throw new RangeError(`${what}: corners ${i + 1} and ${j + 1} are the same point ` +
          `(${points[i].join(', ')})`);
  for (const [i, j, k] of [[0, 1, 2], [0, 1, 3], [0, 2, 3], [1, 2, 3]])
    if (cross(points[i], points[j], points[k]) === 0)
      throw new RangeError(`${what}: corners ${named(i)}, ${named(j)} and ${named(k)} lie on one ` +
        'line');
  for (let i = 0; i < 4; ++i) {
    const [p, a, b, c] = [0, 1, 2, 3].map((k) => points[(i + k) % 4]);
    const left = [cross(a, b, p), cross(b, c, p), cross(c, a, p)].filter((v) => v > 0).length;
    if (left === 0 || left === 3)
      throw new RangeError(`${what}: corner ${named(i)} lies inside the triangle of the other three`);
  }
  const orders = anyOrder ? [[0, 1, 2, 3], [0, 1, 3, 2], [0, 2, 1, 3]] : [[0, 1, 2, 3]];
  const order = orders.map((o) => o.map((i) => points[i])).find(isConvex);
  if (!order)
    throw new RangeError(`${what}: the outline from corner 1 to 2 to 3 to 4 crosses itself; give ` +
      'the corners in order around the outline');
  return order.flat();
}
