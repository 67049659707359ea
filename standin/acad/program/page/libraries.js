// The parts of libraries that the page uses. scripts/bundle makes libraries.bundle.js of them.
import uPlot from 'uplot';
import uPlotStyle from 'uplot/dist/uPlot.min.css';

export {
  AmbientLight, BufferAttribute, BufferGeometry, Color, DirectionalLight, DoubleSide, LineBasicMaterial, LineSegments,
  Matrix4, Mesh, MeshLambertMaterial, OrthographicCamera, PerspectiveCamera, Points, PointsMaterial, Raycaster, Scene,
  Vector2, Vector3, WebGLRenderer,
} from 'three';
export {LineMaterial} from 'three/addons/lines/LineMaterial.js';
export {LineSegments2} from 'three/addons/lines/LineSegments2.js';
export {LineSegmentsGeometry} from 'three/addons/lines/LineSegmentsGeometry.js';
export {uPlot, uPlotStyle};
